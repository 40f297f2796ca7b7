// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AtSpiObject.h"

#include <QCoroTask>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QHash>
#include <QPointer>

#include <chrono>
#include <memory>
#include <optional>

/// One question to a program on the accessibility bus.
struct AtSpiCall
{
    static constexpr std::chrono::milliseconds usualDeadline{250};

    AtSpiObject object;
    QString interface;
    QString member;
    QVariantList arguments = {};
    std::chrono::milliseconds deadline = usualDeadline;
    bool silenceIsHarmless = false; ///< no reply in time says nothing about the program (see markSlow())
};

/// The connection to the session's accessibility bus: questions, the three events that tell where the focus
/// is, and what is known of each program. Main thread only.
///
/// Coroutines that ask hold the bus by a shared pointer, so an answer never finds it gone. A program that
/// left a question unanswered counts as slow for a while; questions to it then fail at once instead of
/// costing another deadline each.
class AtSpiBus final : public QObject
{
    Q_OBJECT

public:
    AtSpiBus() = default;
    ~AtSpiBus() override;

    /// Connects to the bus at @p address and asks the registry for the events. True when it is up.
    static QCoro::Task<bool> open(std::shared_ptr<AtSpiBus> bus, QString address);

    bool isOpen() const { return !m_name.isEmpty() && m_connection.isConnected(); }

    /// Asks, and gives the reply or an error message. Never longer than the deadline of the call.
    static QCoro::Task<QDBusMessage> ask(std::shared_ptr<AtSpiBus> bus, AtSpiCall call);

    /// Whether the program @p owner is on the bus, by the bus's own word: a hung one is.
    static QCoro::Task<bool> isOnBus(std::shared_ptr<AtSpiBus> bus, QString owner);

    /// Process of a program; cached as long as the program is on the bus.
    static QCoro::Task<std::optional<qint64>> processOf(std::shared_ptr<AtSpiBus> bus, QString owner);

    /// The programs that are registered as accessible; nothing when the registry does not answer.
    static QCoro::Task<std::optional<QList<AtSpiObject>>> programs(std::shared_ptr<AtSpiBus> bus);

    /// Bus name of the accessible program that runs as @p processIdentifier, empty when there is none.
    static QCoro::Task<QString> ownerOf(std::shared_ptr<AtSpiBus> bus, qint64 processIdentifier);

    /// What @p object says of itself; nothing when it is gone, or its program does not answer.
    static QCoro::Task<std::optional<AtSpiDescription>> describe(std::shared_ptr<AtSpiBus> bus,
                                                                 AtSpiObject object);

Q_SIGNALS:
    void opened();
    void closed();
    void focusGained(const AtSpiObject &object);
    void windowActivated(const AtSpiObject &window);
    void caretMoved(const AtSpiObject &object);
    void programLeft(const QString &owner);

private Q_SLOTS:
    void onDisconnected();
    void onStateChanged(const QDBusMessage &message);
    void onWindowActivated(const QDBusMessage &message);
    void onCaretMoved(const QDBusMessage &message);
    void onNameOwnerChanged(const QString &name, const QString &oldOwner, const QString &newOwner);

private:
    void close();
    void subscribe();
    void registerEvents();
    void markSlow(const QString &owner);
    bool isSlow(const QString &owner) const;
    std::optional<AtSpiObject> eventSource(const QDBusMessage &message);
    static QCoro::Task<AtSpiToolkit> toolkitOf(std::shared_ptr<AtSpiBus> bus, QString owner);

    QString m_name;
    QDBusConnection m_connection{QString()};
    QElapsedTimer m_clock;
    QHash<QString, qint64> m_slowUntil; ///< by bus name, in ms of m_clock
    QHash<QString, qint64> m_processes;
    QHash<QString, AtSpiToolkit> m_toolkits;
};

/// First value of a reply, nothing when it is an error or of another type.
template <typename T>
std::optional<T> replyValue(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    const QVariant first = reply.arguments().constFirst();
    const QVariant value = first.metaType() == QMetaType::fromType<QDBusVariant>()
                               ? qvariant_cast<QDBusVariant>(first).variant()
                               : first;
    if (value.metaType() == QMetaType::fromType<T>())
        return qvariant_cast<T>(value);
    if (value.metaType() == QMetaType::fromType<QDBusArgument>())
        return qdbus_cast<T>(value);
    return std::nullopt;
}

/// The call that reads a property.
AtSpiCall propertyCall(const AtSpiObject &object, const QString &interface, const QString &property);

namespace AtSpi {
inline const QString accessible = QStringLiteral("org.a11y.atspi.Accessible");
inline const QString application = QStringLiteral("org.a11y.atspi.Application");
inline const QString collection = QStringLiteral("org.a11y.atspi.Collection");
inline const QString text = QStringLiteral("org.a11y.atspi.Text");
inline const QString editableText = QStringLiteral("org.a11y.atspi.EditableText");
} // namespace AtSpi
