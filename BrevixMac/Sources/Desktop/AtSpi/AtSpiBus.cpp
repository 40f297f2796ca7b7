// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiBus.h"

#include "AtSpiAddress.h"

#include <QCoroDBus>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcAtSpi, "brevix.atspi", QtInfoMsg)

constexpr std::chrono::milliseconds slowFor{3000};

const QString registryName = QStringLiteral("org.a11y.atspi.Registry");
const QString registryPath = QStringLiteral("/org/a11y/atspi/registry");
const QString eventObject = QStringLiteral("org.a11y.atspi.Event.Object");
const QString eventWindow = QStringLiteral("org.a11y.atspi.Event.Window");
const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");
const QString localPath = QStringLiteral("/org/freedesktop/DBus/Local");
const QString localInterface = QStringLiteral("org.freedesktop.DBus.Local");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

// Only what the focus needs: every event asked for costs every program on the bus.
const QStringList eventNames{QStringLiteral("object:state-changed:focused"),
                             QStringLiteral("window:activate"), QStringLiteral("object:text-caret-moved")};

QString nextConnectionName()
{
    static int count = 0;
    return QStringLiteral("brevix-accessibility-%1").arg(++count);
}

bool isTimeOut(const QDBusMessage &reply)
{
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return reply.type() == QDBusMessage::ErrorMessage &&
           (type == QDBusError::NoReply || type == QDBusError::Timeout || type == QDBusError::TimedOut);
}

QDBusMessage failure(const QString &text)
{
    return QDBusMessage::createError(QDBusError::Failed, text);
}

QDBusMessage busQuestion(const QString &member, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(busName, busPath, busName, member);
    message.setArguments(arguments);
    return message;
}

} // namespace

AtSpiCall propertyCall(const AtSpiObject &object, const QString &interface, const QString &property)
{
    return {.object = object,
            .interface = properties,
            .member = QStringLiteral("Get"),
            .arguments = {interface, property}};
}

AtSpiBus::~AtSpiBus()
{
    close();
}

QCoro::Task<bool> AtSpiBus::open(std::shared_ptr<AtSpiBus> bus, QString address)
{
    const bool isAnswering = co_await isBusAnswering(address);
    if (!isAnswering)
        co_return false;
    bus->close();
    const QString name = nextConnectionName();
    QDBusConnection connection = QDBusConnection::connectToBus(address, name);
    if (!connection.isConnected()) {
        qCDebug(lcAtSpi) << "no accessibility bus at" << address << connection.lastError().message();
        QDBusConnection::disconnectFromBus(name);
        co_return false;
    }
    bus->m_connection = connection;
    bus->m_name = name;
    bus->m_clock.start();
    bus->subscribe();
    bus->registerEvents();
    Q_EMIT bus->opened();
    co_return true;
}

void AtSpiBus::close()
{
    if (m_name.isEmpty())
        return;
    m_connection = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(std::exchange(m_name, QString()));
    m_slowUntil.clear();
    m_processes.clear();
    m_toolkits.clear();
}

// The signature must be a null string: an empty one matches nothing. Without the match on "focused" the
// noise of every other state would arrive.
void AtSpiBus::subscribe()
{
    m_connection.connect(QString(), localPath, localInterface, QStringLiteral("Disconnected"), this,
                         SLOT(onDisconnected()));
    m_connection.connect(busName, busPath, busName, QStringLiteral("NameOwnerChanged"), this,
                         SLOT(onNameOwnerChanged(QString, QString, QString)));
    m_connection.connect(QString(), QString(), eventObject, QStringLiteral("StateChanged"),
                         {QStringLiteral("focused")}, QString(), this, SLOT(onStateChanged(QDBusMessage)));
    m_connection.connect(QString(), QString(), eventObject, QStringLiteral("TextCaretMoved"), this,
                         SLOT(onCaretMoved(QDBusMessage)));
    m_connection.connect(QString(), QString(), eventWindow, QStringLiteral("Activate"), this,
                         SLOT(onWindowActivated(QDBusMessage)));
}

void AtSpiBus::registerEvents()
{
    for (const QString &event : eventNames) {
        auto message = QDBusMessage::createMethodCall(registryName, registryPath, registryName,
                                                      QStringLiteral("RegisterEvent"));
        message.setArguments({event});
        m_connection.send(message);
    }
}

QCoro::Task<QDBusMessage> AtSpiBus::ask(std::shared_ptr<AtSpiBus> bus, AtSpiCall call)
{
    if (!bus->isOpen() || !call.object.isValid() || bus->isSlow(call.object.owner) ||
        call.deadline <= std::chrono::milliseconds::zero())
        co_return failure(call.object.owner);
    auto message =
        QDBusMessage::createMethodCall(call.object.owner, call.object.path, call.interface, call.member);
    message.setArguments(call.arguments);
    message.setAutoStartService(false);
    const auto pending = bus->m_connection.asyncCall(message, static_cast<int>(call.deadline.count()));
    const QDBusMessage reply = co_await pending;
    if (isTimeOut(reply) && !call.silenceIsHarmless)
        bus->markSlow(call.object.owner);
    co_return reply;
}

QCoro::Task<bool> AtSpiBus::isOnBus(std::shared_ptr<AtSpiBus> bus, QString owner)
{
    if (!bus->isOpen())
        co_return false;
    const auto question = busQuestion(QStringLiteral("NameHasOwner"), {owner});
    const auto pending = bus->m_connection.asyncCall(question, AtSpiCall::usualDeadline.count());
    const QDBusMessage reply = co_await pending;
    co_return replyValue<bool>(reply).value_or(false);
}

QCoro::Task<std::optional<qint64>> AtSpiBus::processOf(std::shared_ptr<AtSpiBus> bus, QString owner)
{
    if (const auto known = bus->m_processes.constFind(owner); known != bus->m_processes.constEnd())
        co_return *known;
    if (!bus->isOpen() || !AtSpiObject::root(owner).isValid())
        co_return std::nullopt;
    const auto question = busQuestion(QStringLiteral("GetConnectionUnixProcessID"), {owner});
    const auto pending = bus->m_connection.asyncCall(question, AtSpiCall::usualDeadline.count());
    const QDBusMessage reply = co_await pending;
    const auto process = replyValue<uint>(reply);
    if (!process)
        co_return std::nullopt;
    bus->m_processes.insert(owner, *process);
    co_return static_cast<qint64>(*process);
}

QCoro::Task<std::optional<QList<AtSpiObject>>> AtSpiBus::programs(std::shared_ptr<AtSpiBus> bus)
{
    if (!bus->isOpen())
        co_return std::nullopt;
    auto message = QDBusMessage::createMethodCall(registryName, AtSpiObject::root({}).path, AtSpi::accessible,
                                                  QStringLiteral("GetChildren"));
    const auto pending = bus->m_connection.asyncCall(message, AtSpiCall::usualDeadline.count());
    const QDBusMessage reply = co_await pending;
    co_return replyValue<QList<AtSpiObject>>(reply);
}

QCoro::Task<QString> AtSpiBus::ownerOf(std::shared_ptr<AtSpiBus> bus, qint64 processIdentifier)
{
    if (const QString known = bus->m_processes.key(processIdentifier); !known.isEmpty())
        co_return known;
    const auto registered = co_await AtSpiBus::programs(bus);
    const auto programs = registered.value_or(QList<AtSpiObject>());
    std::vector<QCoro::Task<std::optional<qint64>>> questions;
    for (const AtSpiObject &program : programs)
        questions.push_back(processOf(bus, program.owner));
    QString found;
    for (qsizetype i = 0; i < programs.size(); ++i) {
        const auto process = co_await questions[static_cast<size_t>(i)];
        if (process == processIdentifier)
            found = programs[i].owner;
    }
    co_return found;
}

QCoro::Task<AtSpiToolkit> AtSpiBus::toolkitOf(std::shared_ptr<AtSpiBus> bus, QString owner)
{
    if (const auto known = bus->m_toolkits.constFind(owner); known != bus->m_toolkits.constEnd())
        co_return *known;
    const AtSpiObject root = AtSpiObject::root(owner);
    auto nameQuestion = ask(bus, propertyCall(root, AtSpi::application, QStringLiteral("ToolkitName")));
    auto versionQuestion = ask(bus, propertyCall(root, AtSpi::application, QStringLiteral("Version")));
    auto programQuestion = ask(bus, propertyCall(root, AtSpi::accessible, QStringLiteral("Name")));
    const QDBusMessage nameReply = co_await nameQuestion;
    const QDBusMessage versionReply = co_await versionQuestion;
    const QDBusMessage programReply = co_await programQuestion;
    const auto name = replyValue<QString>(nameReply);
    if (!name)
        co_return AtSpiToolkit::unknown;
    const auto toolkit = atSpiToolkit(*name, replyValue<QString>(versionReply).value_or(QString()),
                                      replyValue<QString>(programReply).value_or(QString()));
    bus->m_toolkits.insert(owner, toolkit);
    co_return toolkit;
}

QCoro::Task<std::optional<AtSpiDescription>> AtSpiBus::describe(std::shared_ptr<AtSpiBus> bus,
                                                                AtSpiObject object)
{
    AtSpiCall call{.object = object, .interface = AtSpi::accessible, .member = QStringLiteral("GetRole")};
    auto roleQuestion = ask(bus, call);
    call.member = QStringLiteral("GetState");
    auto stateQuestion = ask(bus, call);
    call.member = QStringLiteral("GetInterfaces");
    auto interfaceQuestion = ask(bus, call);
    auto toolkitQuestion = toolkitOf(bus, object.owner);
    const QDBusMessage roleReply = co_await roleQuestion;
    const QDBusMessage stateReply = co_await stateQuestion;
    const QDBusMessage interfaceReply = co_await interfaceQuestion;
    const AtSpiToolkit toolkit = co_await toolkitQuestion;

    const auto role = replyValue<uint>(roleReply);
    const auto states = replyValue<QList<uint>>(stateReply);
    const auto interfaces = replyValue<QStringList>(interfaceReply);
    if (!role || !states || !interfaces)
        co_return std::nullopt;
    AtSpiDescription description{*role, atSpiStates(*states), *interfaces, toolkit};
    if (description.is(AtSpiState::defunct))
        co_return std::nullopt;
    co_return description;
}

void AtSpiBus::markSlow(const QString &owner)
{
    m_slowUntil.insert(owner, m_clock.elapsed() + slowFor.count());
}

bool AtSpiBus::isSlow(const QString &owner) const
{
    const auto until = m_slowUntil.constFind(owner);
    return until != m_slowUntil.constEnd() && m_clock.elapsed() < *until;
}

void AtSpiBus::onDisconnected()
{
    close();
    Q_EMIT closed();
}

void AtSpiBus::onNameOwnerChanged(const QString &name, const QString &oldOwner, const QString &newOwner)
{
    if (name == registryName && !oldOwner.isEmpty() && !newOwner.isEmpty())
        registerEvents(); // a new registry knows nothing of us
    if (!newOwner.isEmpty())
        return;
    m_slowUntil.remove(name);
    m_processes.remove(name);
    m_toolkits.remove(name);
    Q_EMIT programLeft(name);
}

// A program that sends events is alive, whatever it left unanswered before.
std::optional<AtSpiObject> AtSpiBus::eventSource(const QDBusMessage &message)
{
    const AtSpiObject source{message.service(), message.path()};
    m_slowUntil.remove(source.owner);
    return source.isValid() ? std::optional(source) : std::nullopt;
}

void AtSpiBus::onStateChanged(const QDBusMessage &message)
{
    const auto source = eventSource(message);
    const bool isOn = message.arguments().value(1).toInt() == 1;
    if (source && isOn)
        Q_EMIT focusGained(*source);
}

void AtSpiBus::onWindowActivated(const QDBusMessage &message)
{
    if (const auto source = eventSource(message))
        Q_EMIT windowActivated(*source);
}

void AtSpiBus::onCaretMoved(const QDBusMessage &message)
{
    if (const auto source = eventSource(message))
        Q_EMIT caretMoved(*source);
}
