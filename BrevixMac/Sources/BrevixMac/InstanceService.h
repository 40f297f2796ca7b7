// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <chrono>

/// The one running instance of a session, as other processes reach it over D-Bus. Main thread only.
class InstanceService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.brevix.Brevix")

public:
    /// What asking the running instance came to.
    enum class Answer { done, notRunning, noBus, failed };

    explicit InstanceService(QObject *parent = nullptr);

    /// Makes this process the session's instance. False when another one is; true without a session bus,
    /// where nobody can tell.
    bool claim();

    /// Asks the running instance for @p method, within two seconds. Blocks: for a process that does nothing
    /// else.
    static Answer ask(const QString &method);

    struct Reply
    {
        Answer answer = Answer::failed;
        QString text;
    };

    /// The same for a method that answers with a text, within @p patience.
    static Reply askForText(const QString &method, std::chrono::milliseconds patience);

    /// Has the running instance open @p address; otherwise as ask().
    static Answer open(const QString &address);

public Q_SLOTS:
    // Reached over D-Bus by these names.
    void Toggle() { Q_EMIT toggleRequested(); }
    void Palette() { Q_EMIT paletteRequested(); }
    void Show() { Q_EMIT showRequested(); }
    void Settings() { Q_EMIT settingsRequested(); }
    /// Answers with a report in JSON as soon as the examination is done.
    QString Doctor(const QDBusMessage &call);

Q_SIGNALS:
    void toggleRequested();
    void paletteRequested();
    void showRequested();
    void settingsRequested();
    /// Somebody waits for a report as the reply to @p call.
    void doctorRequested(const QDBusMessage &call);
    /// The desktop asks to open @p address, from whomever it comes.
    void openRequested(const QString &address);
};

/// The same instance by the interface that desktops know applications by.
class FreedesktopApplication : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit FreedesktopApplication(InstanceService *instance);

public Q_SLOTS:
    // Reached over D-Bus by these names.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    void ActivateAction(const QString &name, const QVariantList &parameters, const QVariantMap &platformData);

private:
    InstanceService &m_instance;
};
