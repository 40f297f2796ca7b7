// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/TestMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef BREVIX_TEST_GUI
#include <QApplication>
using Application = QApplication;
#else
#include <QCoreApplication>
using Application = QCoreApplication;
#endif
#include <QMutex>
#include <QStringList>

#include <cstdio>

namespace {

QMutex mutex;
QStringList expectedFragments;
QStringList unexpectedWarnings;

// Noise of the test environment, not of the code under test.
const QStringList environmentNoise{
    QStringLiteral("propagateSizeHints"),
    QStringLiteral("This plugin does not support"),
};

bool containsAny(const QString &message, const QStringList &fragments)
{
    return std::any_of(fragments.begin(), fragments.end(),
                       [&](const QString &fragment) { return message.contains(fragment); });
}

void collectWarnings(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QMutexLocker lock(&mutex);
    if ((type == QtWarningMsg || type == QtCriticalMsg) && !containsAny(message, expectedFragments) &&
        !containsAny(message, environmentNoise))
        unexpectedWarnings.append(message);
    std::fprintf(stderr, "%s: %s\n", context.category ? context.category : "log", qPrintable(message));
}

class WarningListener : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo &) override
    {
        const QMutexLocker lock(&mutex);
        expectedFragments.clear();
        unexpectedWarnings.clear();
    }

    void OnTestEnd(const testing::TestInfo &) override
    {
        const QMutexLocker lock(&mutex);
        for (const QString &warning : std::as_const(unexpectedWarnings))
            ADD_FAILURE() << "unexpected warning: " << qPrintable(warning);
    }
};

} // namespace

void expectWarning(const QString &fragment)
{
    const QMutexLocker lock(&mutex);
    expectedFragments.append(fragment);
}

int main(int argc, char **argv)
{
    testing::InitGoogleMock(&argc, argv);
    Application application(argc, argv);
    Application::setApplicationName(QStringLiteral("brevix-test"));
    testing::UnitTest::GetInstance()->listeners().Append(new WarningListener);
    qInstallMessageHandler(&collectWarnings);
    return RUN_ALL_TESTS();
}
