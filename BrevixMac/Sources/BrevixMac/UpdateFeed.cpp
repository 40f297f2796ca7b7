// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateFeed.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <sodium.h>

#include <algorithm>

namespace {

// The first line of a file: this and the signature of all that follows the line.
const QByteArray signatureMark = QByteArrayLiteral("brevix-feed-1 ");

constexpr int formatNumber = 1;
constexpr qsizetype mostReleases = 1000;

using Result = std::variant<UpdateFeed, QString>;

QString unsignedFeed()
{
    return QStringLiteral("The update feed is not signed.");
}

QString wronglySigned()
{
    return QStringLiteral("The signature of the update feed is not valid.");
}

QString malformed(const QString &what)
{
    return QStringLiteral("The update feed is damaged: %1.").arg(what);
}

std::optional<QByteArray> decodedSignature(const QByteArray &text)
{
    const auto decoded = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.size() != qsizetype(crypto_sign_BYTES))
        return std::nullopt;
    return decoded.decoded;
}

bool isSigned(const QByteArray &signature, const QByteArray &content, const QByteArray &publicKey)
{
    const auto bytes = [](const QByteArray &array) {
        return reinterpret_cast<const unsigned char *>(array.constData());
    };
    return sodium_init() >= 0 && crypto_sign_verify_detached(bytes(signature), bytes(content),
                                                             static_cast<unsigned long long>(content.size()),
                                                             bytes(publicKey)) == 0;
}

std::optional<QVersionNumber> readVersion(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9]{1,6}(\\.[0-9]{1,6}){1,3}\\z"));
    if (!form.match(text).hasMatch())
        return std::nullopt;
    return QVersionNumber::fromString(text);
}

std::optional<UpdateRelease> readRelease(const QJsonValue &value)
{
    const QJsonObject object = value.toObject();
    const auto version = readVersion(object.value(u"version").toString());
    const QUrl page(object.value(u"page").toString(), QUrl::StrictMode);
    if (!version || !page.isValid() || page.scheme() != u"https" || page.host().isEmpty() ||
        !page.userInfo().isEmpty())
        return std::nullopt;
    return UpdateRelease{.version = *version, .page = page};
}

Result readContent(const QByteArray &content)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (!document.isObject())
        return malformed(QStringLiteral("it is no JSON object"));
    const QJsonObject object = document.object();
    if (object.value(u"format").toInt() != formatNumber)
        return malformed(QStringLiteral("its format is not known to this version"));
    UpdateFeed feed;
    feed.published = QDateTime::fromString(object.value(u"published").toString(), Qt::ISODate);
    if (!feed.published.isValid() || feed.published.timeSpec() == Qt::LocalTime)
        return malformed(QStringLiteral("it has no date"));
    const QJsonValue releases = object.value(u"releases");
    if (!releases.isArray() || releases.toArray().size() > mostReleases)
        return malformed(QStringLiteral("it has no list of releases"));
    const QJsonArray list = releases.toArray();
    for (const auto &value : list) {
        const auto release = readRelease(value);
        if (!release)
            return malformed(QStringLiteral("a release has no proper version or page"));
        feed.releases.append(*release);
    }
    return feed;
}

} // namespace

std::optional<UpdateRelease> UpdateFeed::newest() const
{
    const auto newest =
        std::ranges::max_element(releases, [](const UpdateRelease &first, const UpdateRelease &second) {
            return QVersionNumber::compare(first.version.normalized(), second.version.normalized()) < 0;
        });
    return newest == releases.end() ? std::nullopt : std::optional(*newest);
}

std::variant<UpdateFeed, QString> UpdateFeed::read(const QByteArray &file, const QByteArray &publicKey)
{
    if (file.size() > maximumSize)
        return malformed(QStringLiteral("it is too large"));
    const qsizetype lineEnd = file.indexOf('\n');
    if (!file.startsWith(signatureMark) || lineEnd < 0)
        return unsignedFeed();
    const auto signature = decodedSignature(file.mid(signatureMark.size(), lineEnd - signatureMark.size()));
    const QByteArray content = file.mid(lineEnd + 1);
    if (publicKey.size() != publicKeySize || !signature || !isSigned(*signature, content, publicKey))
        return wronglySigned();
    return readContent(content);
}
