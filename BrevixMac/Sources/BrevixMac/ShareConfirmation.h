// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>
#include <QUuid>

/// A share link that has just been made and copied. A value.
struct ShareConfirmation
{
    QUuid id;
    QString title;
    QUrl url;
    QDateTime createdAt;

    bool operator==(const ShareConfirmation &) const = default;
};
