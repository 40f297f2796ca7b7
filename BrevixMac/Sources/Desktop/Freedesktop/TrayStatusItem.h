// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Freedesktop/StatusNotifierItem.h"
#include "Desktop/StatusItem.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>

#include <memory>

class QSystemTrayIcon;
class X11SelectionOwner;

/// The tray icon by whichever protocol the session's tray speaks: StatusNotifierItem where a host of it is
/// registered, else XEmbed where an X11 tray is. At most one icon at any time. Tray hosts announce
/// themselves, so waiting for one costs nothing.
class TrayStatusItem final : public StatusItem
{
    Q_OBJECT

public:
    /// @p xembedHost follows the X11 tray's selection and must outlive this object; null without X11.
    explicit TrayStatusItem(X11SelectionOwner *xembedHost,
                            const QDBusConnection &bus = QDBusConnection::sessionBus());
    ~TrayStatusItem() override;

    void setImage(const QIcon &image) override;
    void setToolTip(const QString &toolTip) override;
    void install() override;
    bool isShown() const override;
    std::optional<QRect> geometry() const override;

private:
    enum class Notifier {
        unknown,    ///< not yet answered
        absent,     ///< no watcher, or it has no host
        present,    ///< a host is there, our item not yet
        registered, ///< it shows our item
    };

    void askForWatcher();
    void onWatcherAppeared();
    void onWatcherGone();
    void askForHost();
    void registerItem();
    void setNotifier(Notifier notifier);
    void update();
    void makeEmbeddedIcon();

private Q_SLOTS:
    void onHostRegistered(); // by name: the bus library connects remote signals so
    void onHostUnregistered();

private:
    QDBusConnection m_bus;
    X11SelectionOwner *m_xembedHost;
    QDBusServiceWatcher m_watcher;
    StatusNotifierItem m_item;
    std::unique_ptr<QSystemTrayIcon> m_embeddedIcon;
    QIcon m_image;
    QString m_toolTip;
    Notifier m_notifier = Notifier::unknown;
    int m_generation = 0; ///< answers of an earlier watcher do not count
    bool m_isInstalled = false;
    bool m_isItemPublished = false;
    bool m_wasShown = false;
};
