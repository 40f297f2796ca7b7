// SPDX-License-Identifier: GPL-3.0-or-later
#include "DoctorRules.h"

namespace {

using State = DoctorRow::State;
using Display = SessionFacts::Display;
using DoctorRules::Finding;

const QString x11Session = QStringLiteral("Log in to an X11 session instead.");
const QString restartBrevix = QStringLiteral("Quit Brevix and start it again.");

Finding withoutDisplay()
{
    return {State::fails, QStringLiteral("There is no display in this session."),
            QStringLiteral("Run Brevix in a graphical session.")};
}

bool isDesktop(const SessionFacts &session, QLatin1String name)
{
    return session.desktopName.contains(name, Qt::CaseInsensitive);
}

/// "Super+Shift+P", by the names that keyboards here have on them.
QString keyNames(const KeyboardShortcut &shortcut)
{
    QStringList keys;
    for (const auto &[modifier, name] :
         {std::pair(KeyboardShortcut::command, "Super"), std::pair(KeyboardShortcut::control, "Ctrl"),
          std::pair(KeyboardShortcut::option, "Alt"), std::pair(KeyboardShortcut::shift, "Shift")}) {
        if (shortcut.modifiers & modifier)
            keys.append(QString::fromLatin1(name));
    }
    keys.append(KeyboardShortcut::displayString(shortcut.keyCode));
    return keys.join(u'+');
}

/// How a key is bound to a command on this desktop.
QString binding(const SessionFacts &session)
{
    if (isDesktop(session, QLatin1String("gnome")))
        return QStringLiteral("Settings › Keyboard › View and Customize Shortcuts › Custom Shortcuts: add "
                              "one with the command \"brevix toggle\".");
    if (isDesktop(session, QLatin1String("kde")))
        return QStringLiteral("System Settings › Shortcuts: add a command \"brevix toggle\" and give it a "
                              "key.");
    if (isDesktop(session, QLatin1String("sway")))
        return QStringLiteral("Add to ~/.config/sway/config: bindsym Mod4+Shift+p exec brevix toggle");
    if (isDesktop(session, QLatin1String("hyprland")))
        return QStringLiteral("Add to ~/.config/hypr/hyprland.conf: bind = SUPER SHIFT, P, exec, brevix "
                              "toggle");
    return QStringLiteral("Bind a key to \"brevix toggle\" in the desktop's keyboard settings.");
}

Finding hotkey(const SessionFacts &session, const InstanceFacts &instance)
{
    const QString keys = keyNames(instance.shortcut);
    if (session.display == Display::none)
        return withoutDisplay();
    if (!instance.hasHotkeys)
        return {State::fails, QStringLiteral("This session gives programs no global shortcuts."),
                binding(session)};
    if (!instance.isHotkeyHeld && instance.hasSilentSibling)
        return {State::unknown, keys + u" is held, perhaps by the Brevix that does not answer."_qs,
                restartBrevix};
    if (!instance.isHotkeyHeld)
        return {State::fails,
                keys + u" is held by another program or the desktop, or this keyboard lacks it."_qs,
                QStringLiteral("Record another shortcut in Brevix's settings (brevix settings), or free this "
                               "one. A key bound to \"brevix toggle\" works as well.")};
    if (session.display == Display::xwayland)
        return {State::degraded,
                u"In a Wayland session "_qs + keys +
                    u" reaches Brevix only while an X11 program is in front.",
                binding(session)};
    return {State::works, keys + (instance.isRunning ? u" opens the picker."_qs : u" can be had."_qs)};
}

/// What is wrong with accessibility as such; nothing where it is on.
std::optional<Finding> accessibilityProblem(const SessionFacts &session, const InstanceFacts &instance)
{
    using Accessibility = SessionFacts::Accessibility;
    if (session.display == Display::none)
        return withoutDisplay();
    if (!session.hasSessionBus)
        return Finding{State::fails,
                       QStringLiteral("There is no D-Bus session bus, so no program can tell about its "
                                      "fields."),
                       QStringLiteral("Start the desktop with a session bus, for example with "
                                      "dbus-run-session.")};
    switch (session.accessibility) {
    case Accessibility::noService:
        return Finding{State::fails, QStringLiteral("This session has no accessibility service."),
                       QStringLiteral("Install the package at-spi2-core and log in again.")};
    case Accessibility::notAnswering:
        return Finding{State::fails, QStringLiteral("The accessibility bus does not answer."),
                       QStringLiteral("Log out and in again.")};
    case Accessibility::switchedOff:
        return Finding{State::fails, QStringLiteral("Accessibility is switched off in this session."),
                       QStringLiteral("Press Request beside Accessibility in Brevix's settings (brevix "
                                      "settings), then restart the programs that are open.")};
    case Accessibility::on:
        break;
    }
    if (instance.isRunning && !instance.isTrusted)
        return Finding{State::fails,
                       QStringLiteral("This Brevix has no connection to the accessibility bus."),
                       restartBrevix};
    return std::nullopt;
}

QString list(const QStringList &names)
{
    constexpr qsizetype most = 4;
    if (names.size() > most)
        return names.first(most).join(QStringLiteral(", ")) + u" and %1 more"_qs.arg(names.size() - most);
    if (names.size() < 2)
        return names.join(QString());
    return names.first(names.size() - 1).join(QStringLiteral(", ")) + u" and " + names.last();
}

Finding capture(const SessionFacts &session, const InstanceFacts &instance)
{
    if (const auto problem = accessibilityProblem(session, instance))
        return *problem;
    const QStringList &mute = session.mutePrograms;
    if (!mute.isEmpty())
        return {State::degraded,
                list(mute) +
                    (mute.size() == 1 ? u" does not tell about its fields; "_qs
                                      : u" do not tell about their fields; "_qs) +
                    u"Brevix can only paste there.",
                QStringLiteral("Restart what was open before accessibility was switched on. Browsers based "
                               "on Chromium need --force-renderer-accessibility.")};
    if (session.accessiblePrograms == 0)
        return {State::unknown,
                QStringLiteral("No open program tells about its fields, so there is nothing to try."),
                QStringLiteral("Open an editor and look again.")};
    if (session.accessiblePrograms == 1)
        return {State::works, QStringLiteral("1 program tells about its fields.")};
    return {State::works,
            QStringLiteral("%1 programs tell about their fields.").arg(session.accessiblePrograms)};
}

bool uses(InsertionMethod chosen, InsertionMethod method)
{
    return chosen == method || chosen == InsertionMethod::hybrid;
}

QString notUsed(const InstanceFacts &instance)
{
    return u" Not used: the preferred method is "_qs + title(instance.method) + u'.';
}

Finding directInsertion(const SessionFacts &session, const InstanceFacts &instance)
{
    if (session.display == Display::none)
        return withoutDisplay();
    if (accessibilityProblem(session, instance))
        return {State::fails, QStringLiteral("It needs capture, which does not work."),
                QStringLiteral("See Capture.")};
    const bool isUsed = uses(instance.method, InsertionMethod::accessibility);
    const QString note = isUsed ? QString() : notUsed(instance);
    if (session.accessiblePrograms == 0)
        return {State::unknown,
                u"No open program tells about its fields, so there is nothing to try it on."_qs + note,
                QStringLiteral("Open an editor and look again.")};
    return {State::works, u"Text is written into fields that take it, and read back."_qs + note};
}

Finding paste(const SessionFacts &session, const InstanceFacts &instance)
{
    if (session.display == Display::none)
        return withoutDisplay();
    if (session.display == Display::wayland)
        return {State::fails,
                QStringLiteral("This session gives Brevix no way to press keys in other "
                               "programs."),
                QStringLiteral("Copy with Ctrl+Return and paste yourself, or log in to an X11 session.")};
    if (!session.hasKeySynthesis)
        return {State::fails,
                QStringLiteral("The X server lacks the extension XTEST, so Brevix cannot press keys."),
                QStringLiteral("Switch XTEST on in the X server, or copy with Ctrl+Return and paste "
                               "yourself.")};
    if (instance.isRunning && !instance.isPostingAllowed)
        return {State::fails, QStringLiteral("This Brevix has lost its connection for pressing keys."),
                restartBrevix};
    if (!session.hasPasteKeys)
        return {State::fails, QStringLiteral("The keyboard layout has neither a V nor an Insert key."),
                QStringLiteral("Add a layout with Latin letters beside it.")};
    if (accessibilityProblem(session, instance))
        return {State::fails, QStringLiteral("Without capture Brevix does not know where to paste."),
                QStringLiteral("See Capture. Until then copy with Ctrl+Return and paste yourself.")};
    if (session.display == Display::xwayland)
        return {State::degraded, QStringLiteral("In a Wayland session the keys reach only X11 programs."),
                x11Session};
    if (!session.hasWindowManager)
        return {State::degraded,
                QStringLiteral("No window manager tells which window is active; Brevix goes by the input "
                               "focus."),
                QStringLiteral("Start a window manager.")};
    const bool isUsed = uses(instance.method, InsertionMethod::clipboardPaste);
    const QString note = isUsed ? QString() : notUsed(instance);
    return {State::works, u"Brevix can press the paste keys."_qs + note};
}

Finding clipboardRestore(const SessionFacts &session, const InstanceFacts &)
{
    using Clipboard = SessionFacts::Clipboard;
    if (session.display == Display::none)
        return withoutDisplay();
    const QString &owner = session.clipboardOwner;
    switch (session.clipboard) {
    case Clipboard::unreachable:
        return {State::fails, QStringLiteral("Brevix cannot reach the clipboard of this session."),
                x11Session};
    case Clipboard::silent:
        return {State::fails,
                (owner.isEmpty() ? u"The program that owns the clipboard"_qs
                                 : QString(owner + u", which owns the clipboard,")) +
                    u" does not answer, so its content cannot be saved; Brevix then pastes nothing.",
                u"Copy something in another program, or restart "_qs +
                    (owner.isEmpty() ? u"that program."_qs : QString(owner + u'.'))};
    case Clipboard::empty:
    case Clipboard::answering:
        break;
    }
    const bool isOutOfReach =
        session.display == Display::xwayland && !isDesktop(session, QLatin1String("gnome"));
    if (isOutOfReach)
        return {State::degraded,
                QStringLiteral("In a Wayland session Brevix reaches the clipboard only while an X11 program "
                               "is in front."),
                x11Session};
    if (session.clipboard == Clipboard::empty)
        return {State::works, QStringLiteral("The clipboard is empty and would be left so.")};
    return {State::works, QStringLiteral("What is on the clipboard can be saved and put back.")};
}

Finding tray(const SessionFacts &session, const InstanceFacts &instance)
{
    using Tray = SessionFacts::Tray;
    if (session.display == Display::none)
        return withoutDisplay();
    const bool hasHost = session.tray == Tray::notifier || session.tray == Tray::embedding;
    if (hasHost && instance.isRunning && !instance.isTrayIconShown)
        return {State::fails, QStringLiteral("There is a tray, and it has not taken the icon."),
                QStringLiteral("Restart the desktop's panel, or Brevix.")};
    if (session.tray == Tray::notifier)
        return {State::works, QStringLiteral("The panel shows icons by the StatusNotifierItem protocol.")};
    if (session.tray == Tray::embedding)
        return {State::works, QStringLiteral("The tray shows icons by the XEmbed protocol.")};
    const QString fix =
        isDesktop(session, QLatin1String("gnome"))
            ? QStringLiteral(
                  "Install the package gnome-shell-extension-appindicator and switch the extension "
                  "on.")
            : QStringLiteral("Add a tray to the desktop's panel, or start a panel that has one.");
    return {State::fails,
            QStringLiteral("Nothing shows tray icons in this session. The hotkey and \"brevix toggle\" do "
                           "not need one."),
            fix};
}

Finding schemeHandler(const SessionFacts &session, const InstanceFacts &)
{
    using Claim = SchemeFacts::Claim;
    const SchemeFacts &scheme = session.scheme;
    if (!scheme.isPrivate)
        return {State::fails, QStringLiteral("This build has no scheme of its own for signing in."),
                QStringLiteral(
                    "Name a project in share/brevix/GoogleService-Info.plist, or use brevix --local.")};
    if (!session.hasSessionBus)
        return {State::fails,
                QStringLiteral("Without a D-Bus session bus a sign-in cannot come back to Brevix."),
                QStringLiteral("Start the desktop with a session bus, for example with dbus-run-session.")};
    if (!scheme.canRegister && scheme.claim != Claim::ours)
        return {State::fails,
                QStringLiteral("Brevix cannot write the files that register it with the desktop."),
                QStringLiteral("Make ~/.local/share/applications and ~/.config writable.")};
    if (scheme.claim == Claim::somebody && scheme.isOverruled)
        return {State::fails,
                scheme.handler + u" gets the end of a sign-in, although Brevix is registered for it."_qs,
                QStringLiteral("Remove that default: see the files *-mimeapps.list in ~/.config.")};
    if (!scheme.hasOpener)
        return {State::degraded, QStringLiteral("Nothing is installed that opens a browser."),
                QStringLiteral("Install the package xdg-utils, or copy the link that the picker offers.")};
    if (scheme.isRefusedByOpener)
        return {State::degraded,
                QStringLiteral("On this desktop xdg-open, which Chromium uses, refuses addresses like that "
                               "of the sign-in."),
                QStringLiteral("Sign in with Firefox, which does not depend on it.")};
    if (scheme.claim == Claim::ours)
        return {State::works, QStringLiteral("The end of a sign-in opens Brevix.")};
    if (scheme.claim == Claim::broken)
        return {State::works, u"Registered for %1, which is gone; signing in registers this Brevix."_qs.arg(
                                  scheme.handler)};
    if (scheme.claim == Claim::somebody)
        return {State::works, u"Now with %1; signing in registers Brevix."_qs.arg(scheme.handler)};
    return {State::works, QStringLiteral("Signing in registers Brevix; nothing stands in its way.")};
}

} // namespace

const std::array<DoctorRules::Rule, 7> &DoctorRules::all()
{
    static constexpr std::array<Rule, 7> rules{{
        {"hotkey", "Hotkey", &hotkey},
        {"capture", "Capture", &capture},
        {"directInsertion", "Direct insertion", &directInsertion},
        {"paste", "Paste", &paste},
        {"clipboardRestore", "Clipboard restore", &clipboardRestore},
        {"tray", "Tray", &tray},
        {"schemeHandler", "Scheme handler", &schemeHandler},
    }};
    return rules;
}

QString DoctorRules::sessionName(const SessionFacts &session)
{
    QString name;
    switch (session.display) {
    case Display::none:
        return QStringLiteral("no display");
    case Display::x11:
        name = QStringLiteral("X11");
        break;
    case Display::xwayland:
        name = QStringLiteral("X11 inside Wayland");
        break;
    case Display::wayland:
        name = QStringLiteral("Wayland");
        break;
    }
    return session.desktopName.isEmpty() ? name : QString(name + u", " + session.desktopName);
}
