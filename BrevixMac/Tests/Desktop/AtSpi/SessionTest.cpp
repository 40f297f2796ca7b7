// SPDX-License-Identifier: GPL-3.0-or-later
// The session's side: accessibility switched off, switched on, restarted, missing, or not answering.
#include "Desktop/AtSpi/AtSpiAccessibilityTree.h"

#include "Support/TestMain.h"
#include "Support/Waiting.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString service = QStringLiteral("org.a11y.Bus");
const QString path = QStringLiteral("/org/a11y/bus");

QVariant statusProperty(const QString &name)
{
    auto message = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message.setArguments({QStringLiteral("org.a11y.Status"), name});
    const QDBusPendingReply<QDBusVariant> reply = QDBusConnection::sessionBus().asyncCall(message);
    waitUntil([&] { return reply.isFinished(); });
    return reply.value().variant();
}

void setIsEnabled(bool isEnabled)
{
    auto message = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    message.setArguments({QStringLiteral("org.a11y.Status"), QStringLiteral("IsEnabled"),
                          QVariant::fromValue(QDBusVariant(isEnabled))});
    const auto reply = QDBusConnection::sessionBus().asyncCall(message);
    waitUntil([&] { return reply.isFinished(); });
}

qint64 serviceProcess()
{
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    message.setArguments({service});
    const QDBusPendingReply<uint> reply = QDBusConnection::sessionBus().asyncCall(message);
    waitUntil([&] { return reply.isFinished(); });
    return reply.isValid() ? reply.value() : 0;
}

/// A session bus of its own that can start nothing.
class EmptySession
{
public:
    EmptySession()
    {
        QFile configuration(m_folder.filePath(QStringLiteral("session.conf")));
        EXPECT_TRUE(configuration.open(QIODevice::WriteOnly));
        configuration.write(
            "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
            "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n<busconfig>"
            "<type>session</type><listen>unix:path=" +
            m_folder.filePath(QStringLiteral("socket")).toUtf8() +
            "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
            "<allow eavesdrop=\"true\"/>"
            "<allow own=\"*\"/></policy></busconfig>");
        configuration.close();
        m_daemon.setStandardErrorFile(QProcess::nullDevice());
        m_daemon.start(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--nofork"), QStringLiteral("--config-file=") + configuration.fileName()});
        EXPECT_TRUE(waitUntil([&] { return QFile::exists(m_folder.filePath(QStringLiteral("socket"))); }));
    }

    ~EmptySession()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
        for (const QString &name : std::as_const(m_names))
            QDBusConnection::disconnectFromBus(name);
    }

    QDBusConnection connect()
    {
        m_names.append(QStringLiteral("empty-session-%1").arg(m_names.size()));
        return QDBusConnection::connectToBus(
            QStringLiteral("unix:path=") + m_folder.filePath(QStringLiteral("socket")), m_names.last());
    }

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QStringList m_names;
};

/// Hands out an address that leads nowhere, and says that accessibility is on.
class BogusService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.a11y.Bus")

public:
    explicit BogusService(QString address)
        : m_address(std::move(address))
    {
    }

    int questions = 0;

public Q_SLOTS:
    QString GetAddress()
    {
        ++questions;
        return m_address;
    }

private:
    QString m_address;
};

void offer(BogusService &bogus, QDBusConnection connection)
{
    connection.registerObject(path, &bogus, QDBusConnection::ExportAllSlots);
    connection.registerService(service);
}

} // namespace

TEST(Session, accessibilitySwitchedOffIsNotTrustedAndAskingSwitchesItOn)
{
    setIsEnabled(false);
    AtSpiAccessibilityTree tree;
    int changes = 0;
    QObject::connect(&tree, &AccessibilityTree::trustChanged, &tree, [&] { ++changes; });
    EXPECT_FALSE(waitUntil([&] { return tree.isProcessTrusted(); }, std::chrono::milliseconds(500)));
    EXPECT_EQ(changes, 0);
    tree.requestTrust();
    EXPECT_TRUE(waitUntil([&] { return tree.isProcessTrusted(); }));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(statusProperty(QStringLiteral("IsEnabled")), true);
    EXPECT_EQ(statusProperty(QStringLiteral("ScreenReaderEnabled")), false);
}

TEST(Session, trustFollowsTheSwitch)
{
    setIsEnabled(true);
    AtSpiAccessibilityTree tree;
    EXPECT_TRUE(waitUntil([&] { return tree.isProcessTrusted(); }));
    setIsEnabled(false);
    EXPECT_TRUE(waitUntil([&] { return !tree.isProcessTrusted(); }));
    setIsEnabled(true);
    EXPECT_TRUE(waitUntil([&] { return tree.isProcessTrusted(); }));
}

TEST(Session, aRestartedBusIsFoundAgain)
{
    setIsEnabled(true);
    AtSpiAccessibilityTree tree;
    ASSERT_TRUE(waitUntil([&] { return tree.isProcessTrusted(); }));
    const qint64 launcher = serviceProcess();
    ASSERT_NE(launcher, 0);
    QProcess::execute(QStringLiteral("kill"), {QString::number(launcher)});
    EXPECT_TRUE(waitUntil([&] { return !tree.isProcessTrusted(); }));
    EXPECT_TRUE(waitUntil(
        [&] {
            tree.requestTrust();
            return waitUntil([&] { return tree.isProcessTrusted(); }, std::chrono::seconds(1));
        },
        std::chrono::seconds(10)));
    EXPECT_NE(serviceProcess(), launcher);
}

TEST(Session, withoutAnAccessibilityServiceNothingIsTrustedAndNothingHangs)
{
    EmptySession session;
    AtSpiAccessibilityTree tree(session.connect());
    QElapsedTimer timer;
    timer.start();
    tree.requestTrust();
    EXPECT_FALSE(await(tree.attribute(tree.systemWideElement(), AX::focusedUIElement)));
    EXPECT_FALSE(await(tree.attribute(tree.applicationElement(1), AX::focusedUIElement)));
    EXPECT_LT(timer.elapsed(), 300);
    EXPECT_FALSE(waitUntil([&] { return tree.isProcessTrusted(); }, std::chrono::milliseconds(500)));
}

TEST(Session, aSessionWithoutAnyBusIsNotTrusted)
{
    AtSpiAccessibilityTree tree(QDBusConnection(QStringLiteral("no such connection")));
    tree.requestTrust();
    EXPECT_FALSE(await(tree.attribute(tree.systemWideElement(), AX::focusedUIElement)));
    EXPECT_FALSE(tree.isProcessTrusted());
}

TEST(Session, anAddressThatLeadsNowhereIsTriedAgainWithoutHaste)
{
    EmptySession session;
    BogusService bogus(QStringLiteral("unix:path=/nonexistent/accessibility"));
    offer(bogus, session.connect());
    AtSpiAccessibilityTree tree(session.connect());
    EXPECT_TRUE(waitUntil([&] { return bogus.questions >= 2; }));
    EXPECT_FALSE(waitUntil([&] { return bogus.questions > 4; }, std::chrono::milliseconds(1500)));
    EXPECT_FALSE(tree.isProcessTrusted());
    EXPECT_FALSE(await(tree.attribute(tree.systemWideElement(), AX::focusedUIElement)));
}

TEST(Session, aBusThatAcceptsAndNeverAnswersBlocksNobody)
{
    QTemporaryDir folder;
    QLocalServer silent;
    ASSERT_TRUE(silent.listen(folder.filePath(QStringLiteral("silent"))));
    EmptySession session;
    BogusService bogus(QStringLiteral("unix:path=") + silent.fullServerName());
    offer(bogus, session.connect());
    QElapsedTimer sinceTurn;
    qint64 longest = 0;
    AtSpiAccessibilityTree tree(session.connect());
    sinceTurn.start();
    waitUntil([&] {
        longest = std::max(longest, sinceTurn.restart());
        return bogus.questions >= 2;
    });
    EXPECT_GE(bogus.questions, 2);
    EXPECT_LT(longest, 200);
    EXPECT_FALSE(tree.isProcessTrusted());
}

#include "SessionTest.moc"
