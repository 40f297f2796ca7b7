// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QObject>
#include <QRect>
#include <QString>

#include <optional>

/// The icon in the desktop's tray. Main thread only. A tray host may come and go at any time: the item
/// appears as soon as there is one.
class StatusItem : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void setImage(const QIcon &image) = 0;
    virtual void setToolTip(const QString &toolTip) = 0;

    /// Shows the item from now on.
    virtual void install() = 0;

    /// Whether some tray host shows it now.
    virtual bool isShown() const = 0;

    /// Where it is, in Qt's desktop coordinates; nothing when the host does not tell.
    virtual std::optional<QRect> geometry() const = 0;

Q_SIGNALS:
    /// A mouse button went down on it. @p near is where on the desktop, as well as the host tells.
    void pressed(QPoint near);
    void isShownChanged();
};
