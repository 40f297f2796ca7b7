// SPDX-License-Identifier: GPL-3.0-or-later
#include "ResourcePath.h"

#include <QStringDecoder>

#include <algorithm>

namespace Cloud {

namespace {

// Limits of the Firestore data model, in bytes of UTF-8 where they are sizes.
constexpr qsizetype maximumNameSize = 1500;
constexpr qsizetype maximumPathSize = 6LL * 1024;
constexpr qsizetype maximumDepth = 200;

bool isName(const QString &text)
{
    return !text.isEmpty() && text != QLatin1String(".") && text != QLatin1String("..") &&
           text.toUtf8().size() <= maximumNameSize;
}

} // namespace

std::optional<QStringList> decodedPath(const QByteArray &encodedPath)
{
    QStringList pieces;
    for (const QByteArray &encoded : encodedPath.split('/')) {
        const QByteArray bytes = QByteArray::fromPercentEncoding(encoded);
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString piece = decoder(bytes);
        if (decoder.hasError() || bytes.contains('/') || bytes.contains('\0'))
            return std::nullopt;
        pieces.append(piece);
    }
    if (!pieces.isEmpty() && pieces.constFirst().isEmpty())
        pieces.removeFirst();
    if (!pieces.isEmpty() && pieces.constLast().isEmpty())
        pieces.removeLast();
    return pieces;
}

std::optional<ResourcePath> ResourcePath::fromPieces(const QStringList &pieces)
{
    if (pieces.size() < 5 || pieces[0] != QLatin1String("projects") ||
        pieces[2] != QLatin1String("databases") || pieces[4] != QLatin1String("documents"))
        return std::nullopt;
    ResourcePath path;
    path.m_projectID = pieces[1];
    path.m_databaseID = pieces[3];
    path.m_segments = pieces.sliced(5);
    return path.isValid() ? std::optional(path) : std::nullopt;
}

std::optional<ResourcePath> ResourcePath::child(const QString &id) const
{
    ResourcePath path = *this;
    path.m_segments.append(id);
    return path.isValid() && !id.contains(u'/') && !id.contains(QChar(u'\0')) ? std::optional(path)
                                                                              : std::nullopt;
}

bool ResourcePath::isValid() const
{
    return std::all_of(m_segments.begin(), m_segments.end(), &isName) && m_segments.size() <= maximumDepth &&
           m_segments.join(u'/').toUtf8().size() <= maximumPathSize;
}

QString ResourcePath::collection() const
{
    return isCollection() ? m_segments.join(u'/') : m_segments.sliced(0, m_segments.size() - 1).join(u'/');
}

QString ResourcePath::collectionName() const
{
    return QStringLiteral("projects/%1/databases/%2/documents/").arg(m_projectID, m_databaseID) +
           collection();
}

} // namespace Cloud
