// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringDecoder>

#include <optional>

/// What the body of a failed cloud call says.
namespace HttpErrorBody {

/// The `error.message` of a Google API error object.
inline std::optional<QString> message(const QByteArray &body)
{
    const QJsonObject error = QJsonDocument::fromJson(body).object().value(u"error").toObject();
    const QJsonValue message = error.value(u"message");
    return message.isString() ? std::optional(message.toString()) : std::nullopt;
}

/// The whole body, untrimmed, if it is UTF-8 text and not empty.
inline std::optional<QString> text(const QByteArray &body)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder.decode(body);
    return decoder.hasError() || text.isEmpty() ? std::nullopt : std::optional(text);
}

} // namespace HttpErrorBody
