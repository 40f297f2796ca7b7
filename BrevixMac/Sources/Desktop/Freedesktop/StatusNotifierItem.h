// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Freedesktop/StatusNotifierTypes.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QIcon>
#include <QObject>
#include <QPoint>
#include <QString>

/// A tray item as an object on the session bus, for hosts of the StatusNotifierItem protocol. It has a bus
/// name of its own, because a watcher forgets an item only when its name goes. Main thread only.
class StatusNotifierItem final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ identifier CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowIdentifier CONSTANT)
    Q_PROPERTY(bool ItemIsMenu READ isMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(StatusNotifierPixmaps IconPixmap READ iconPixmaps NOTIFY NewIcon)
    Q_PROPERTY(QString OverlayIconName READ iconName CONSTANT)
    Q_PROPERTY(StatusNotifierPixmaps OverlayIconPixmap READ noPixmaps CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ iconName CONSTANT)
    Q_PROPERTY(StatusNotifierPixmaps AttentionIconPixmap READ noPixmaps CONSTANT)
    Q_PROPERTY(QString AttentionMovieName READ iconName CONSTANT)
    Q_PROPERTY(StatusNotifierToolTip ToolTip READ toolTip NOTIFY NewToolTip)

public:
    explicit StatusNotifierItem(QDBusConnection bus = QDBusConnection::sessionBus(),
                                QObject *parent = nullptr);
    ~StatusNotifierItem() override;

    /// Takes the bus name and puts the object on the bus; false when the bus refuses. Once.
    bool publish();

    /// Its name on the bus.
    QString service() const { return m_service; }

    void setIcon(const QIcon &icon);
    void setToolTip(const QString &toolTip);

    static QString objectPath() { return QStringLiteral("/StatusNotifierItem"); }

    /// The sizes hosts pick from; the same size once.
    static StatusNotifierPixmaps pixmaps(const QIcon &icon);

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString identifier() const;
    QString title() const;
    QString status() const { return QStringLiteral("Active"); }
    int windowIdentifier() const { return 0; }
    bool isMenu() const { return false; }
    QDBusObjectPath menu() const { return QDBusObjectPath(QStringLiteral("/NO_DBUSMENU")); }
    QString iconName() const { return {}; } ///< pixels only: the icon is in no icon theme
    StatusNotifierPixmaps iconPixmaps() const { return m_pixmaps; }
    StatusNotifierPixmaps noPixmaps() const { return {}; }
    StatusNotifierToolTip toolTip() const;

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString &orientation);

Q_SIGNALS:
    /// Any button. @p position as the host tells it, in the X server's pixels; many hosts tell 0, 0.
    void pressed(QPoint position);

    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewToolTip();

private:
    QDBusConnection m_bus;
    QString m_service;
    bool m_isPublished = false;
    StatusNotifierPixmaps m_pixmaps;
    QString m_toolTip;
};
