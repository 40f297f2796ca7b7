// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

/// One size of an icon as the StatusNotifierItem protocol sends it: ARGB, 32 bits a pixel, most significant
/// byte first.
struct StatusNotifierPixmap
{
    int width = 0;
    int height = 0;
    QByteArray bytes;

    bool operator==(const StatusNotifierPixmap &) const = default;
};
using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

struct StatusNotifierToolTip
{
    QString iconName;
    StatusNotifierPixmaps pixmaps;
    QString title;
    QString description;

    bool operator==(const StatusNotifierToolTip &) const = default;
};

Q_DECLARE_METATYPE(StatusNotifierPixmap)
Q_DECLARE_METATYPE(StatusNotifierPixmaps)
Q_DECLARE_METATYPE(StatusNotifierToolTip)

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierPixmap &pixmap);
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierPixmap &pixmap);
QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierToolTip &toolTip);
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierToolTip &toolTip);
