// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <QStringList>

/// What stands between the sign-in page's last address and this application. A value.
struct SchemeFacts
{
    /// Whose the scheme is on this desktop.
    enum class Claim {
        nobody,  ///< not registered yet
        ours,    ///< addresses of it start us
        broken,  ///< registered for a program that is gone
        somebody ///< another program gets them
    };

    bool isPrivate = false; ///< one that an application may claim
    Claim claim = Claim::nobody;
    QString handler;                ///< claim somebody: its desktop entry; claim broken: the missing program
    bool isOverruled = false;       ///< claim somebody, although our registration is in place
    bool canRegister = false;       ///< whether the files of a registration can be written
    bool hasOpener = false;         ///< whether anything opens a browser
    bool isRefusedByOpener = false; ///< whether that opener refuses addresses of such a scheme

    bool operator==(const SchemeFacts &) const = default;
};

/// What looking at the desktop session has found. A value; what could not be looked at is as if it were not
/// there.
struct SessionFacts
{
    enum class Display {
        none,
        x11,
        xwayland, ///< an X server inside a Wayland session: other windows are out of its reach
        wayland
    };
    enum class Accessibility {
        noService,    ///< nobody hands out the accessibility bus
        notAnswering, ///< the bus or its registry does not answer
        switchedOff,
        on
    };
    enum class Clipboard {
        unreachable,
        empty,
        answering,
        silent ///< its owner does not answer
    };
    enum class Tray {
        none,
        watcherWithoutHost, ///< icons are collected and shown by nobody
        notifier,           ///< StatusNotifierItem
        embedding           ///< XEmbed
    };

    Display display = Display::none;
    QString desktopName; ///< as in $XDG_CURRENT_DESKTOP
    bool hasSessionBus = false;
    bool hasWindowManager = false;
    Accessibility accessibility = Accessibility::noService;
    int accessiblePrograms = 0; ///< on the accessibility bus, Brevix not counted
    QStringList mutePrograms;   ///< with a window and not on that bus; terminals are not counted
    bool hasKeySynthesis = false;
    bool hasPasteKeys = false; ///< whether the keyboard has the keys of a paste
    Clipboard clipboard = Clipboard::unreachable;
    QString clipboardOwner; ///< the program's name, empty when it is not known
    Tray tray = Tray::none;
    SchemeFacts scheme;

    bool operator==(const SessionFacts &) const = default;
};

/// Looks at what the session offers. Main thread only. Changes nothing that a user could notice: it asks, and
/// neither reads the clipboard's content nor shows, presses or registers anything.
class SessionProbe
{
public:
    SessionProbe() = default;
    virtual ~SessionProbe() = default;
    SessionProbe(const SessionProbe &) = delete;
    SessionProbe &operator=(const SessionProbe &) = delete;

    /// Ends within ten seconds, whoever does not answer. @p scheme is the one
    /// that the sign-in page's last address has.
    virtual QCoro::Task<SessionFacts> examine(QString scheme) = 0;
};
