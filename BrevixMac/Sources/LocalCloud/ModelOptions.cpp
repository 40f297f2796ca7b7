// SPDX-License-Identifier: GPL-3.0-or-later
#include "ModelOptions.h"

#include <QFile>
#include <QHostAddress>
#include <QProcessEnvironment>

namespace Cloud {

namespace {

constexpr qint64 maximumKeySize = 4096;

bool isLoopback(const QString &host)
{
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

/// A key must not cross a network in the clear.
bool isUsable(const QUrl &url)
{
    const bool isPrivate = url.scheme() == QLatin1String("https") ||
                           (url.scheme() == QLatin1String("http") && isLoopback(url.host()));
    return url.isValid() && isPrivate && !url.host().isEmpty() && url.userInfo().isEmpty() && !url.hasQuery();
}

QByteArray keyInFile(const QString &path, QString &problem)
{
    constexpr auto others =
        QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther | QFileDevice::WriteOther;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problem = QStringLiteral("The key file \"%1\" cannot be read: %2.").arg(path, file.errorString());
        return {};
    }
    if (file.permissions() & others) {
        problem = QStringLiteral("The key file \"%1\" must be its owner's alone (chmod 600).").arg(path);
        return {};
    }
    return file.read(maximumKeySize).trimmed();
}

} // namespace

ModelOptions ModelOptions::fromEnvironment(const QProcessEnvironment &environment, QString &problem)
{
    const QString url = environment.value(QStringLiteral("BREVIX_MODEL_URL"));
    if (url.isEmpty())
        return {};
    ModelOptions options{QUrl(url, QUrl::StrictMode), environment.value(QStringLiteral("BREVIX_MODEL")),
                         environment.value(QStringLiteral("BREVIX_MODEL_KEY")).toUtf8()};
    const QString keyFile = environment.value(QStringLiteral("BREVIX_MODEL_KEY_FILE"));
    if (!keyFile.isEmpty())
        options.key = keyInFile(keyFile, problem);
    if (!isUsable(options.baseUrl))
        problem = QStringLiteral("BREVIX_MODEL_URL must be an https address, or http on this computer.");
    else if (options.model.isEmpty())
        problem = QStringLiteral("BREVIX_MODEL must name the model.");
    return problem.isEmpty() ? options : ModelOptions();
}

} // namespace Cloud
