// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiObject.h"

#include <QDBusArgument>
#include <QDBusObjectPath>

#include <algorithm>

namespace {

bool isNameCharacter(QChar c)
{
    return c.unicode() < 128 && (c.isLetterOrNumber() || c == u'_');
}

bool isUniqueBusName(const QString &name)
{
    constexpr qsizetype longestName = 255;
    return name.size() <= longestName && name.startsWith(u':') && name.contains(u'.') &&
           !name.endsWith(u'.') && !name.contains(QLatin1String("..")) &&
           !name.startsWith(QLatin1String(":.")) && std::all_of(name.begin() + 1, name.end(), [](QChar c) {
               return isNameCharacter(c) || c == u'.' || c == u'-';
           });
}

bool isObjectPath(const QString &path)
{
    return path.size() > 1 && path.startsWith(u'/') && !path.endsWith(u'/') &&
           !path.contains(QLatin1String("//")) &&
           std::all_of(path.begin(), path.end(), [](QChar c) { return isNameCharacter(c) || c == u'/'; });
}

} // namespace

AtSpiObject AtSpiObject::root(const QString &owner)
{
    return {owner, QStringLiteral("/org/a11y/atspi/accessible/root")};
}

bool AtSpiObject::isValid() const
{
    return isUniqueBusName(owner) && isObjectPath(path) && path != QLatin1String("/org/a11y/atspi/null");
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AtSpiObject &object)
{
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> object.owner >> path;
    argument.endStructure();
    object.path = path.path();
    return argument;
}

AtSpiToolkit atSpiToolkit(const QString &toolkitName, const QString &version, const QString &program)
{
    if (program == u"soffice")
        return AtSpiToolkit::libreOffice;
    const auto named = [&](const char *name) {
        return toolkitName.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
    };
    if (named("gtk"))
        return version.startsWith(u'4')   ? AtSpiToolkit::gtk4
               : version.startsWith(u'3') ? AtSpiToolkit::gtk3
                                          : AtSpiToolkit::unknown;
    if (named("Qt"))
        return AtSpiToolkit::qt;
    if (named("VCL"))
        return AtSpiToolkit::libreOffice;
    if (named("Gecko"))
        return AtSpiToolkit::gecko;
    if (named("Chromium"))
        return AtSpiToolkit::chromium;
    return AtSpiToolkit::unknown;
}

quint64 atSpiStates(const QList<uint> &words)
{
    constexpr int bitsPerWord = 32;
    quint64 states = 0;
    for (qsizetype i = 0; i < std::min<qsizetype>(words.size(), 2); ++i)
        states |= static_cast<quint64>(words[i]) << (bitsPerWord * i);
    return states;
}
