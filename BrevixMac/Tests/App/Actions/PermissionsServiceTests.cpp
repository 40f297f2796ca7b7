// SPDX-License-Identifier: GPL-3.0-or-later
#include "PermissionsService.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace std::chrono_literals;

/// Tells when it is asked whether the process is trusted.
class WatchedTree final : public InMemoryAccessibilityTree
{
public:
    mutable QList<std::chrono::milliseconds> reads;

    WatchedTree() { m_clock.start(); }

    bool isProcessTrusted() const override
    {
        reads.append(now());
        return trusted;
    }

    std::chrono::milliseconds now() const { return std::chrono::milliseconds(m_clock.elapsed()); }

private:
    QElapsedTimer m_clock;
};

/// A busy machine may be late, but never early.
constexpr auto tolerance = 250ms;

void expectRead(std::chrono::milliseconds read, std::chrono::milliseconds due)
{
    EXPECT_GE(read.count(), (due - 1ms).count());
    EXPECT_LE(read.count(), (due + tolerance).count());
}

class PermissionsServiceTest : public testing::Test
{
protected:
    void countChanges(PermissionsService &service)
    {
        QObject::connect(&service, &PermissionsService::accessibilityGrantedChanged, &service,
                         [this] { ++accessibilityChanges; });
        QObject::connect(&service, &PermissionsService::postEventGrantedChanged, &service,
                         [this] { ++postEventChanges; });
    }

    WatchedTree tree;
    InMemoryKeyEvents keyEvents;
    int accessibilityChanges = 0;
    int postEventChanges = 0;
};

} // namespace

TEST_F(PermissionsServiceTest, readsBothGrantsWhenItIsMade)
{
    for (const bool trusted : {true, false}) {
        for (const bool allowed : {true, false}) {
            tree.trusted = trusted;
            keyEvents.allowed = allowed;
            const PermissionsService service(tree, keyEvents);
            EXPECT_EQ(service.accessibilityGranted(), trusted);
            EXPECT_EQ(service.postEventGranted(), allowed);
        }
    }
    EXPECT_EQ(tree.trustRequests, 0) << "reading must not ask the user";
    EXPECT_EQ(keyEvents.requests, 0);
}

TEST_F(PermissionsServiceTest, publishesOnlyTheGrantThatHasChanged)
{
    PermissionsService service(tree, keyEvents);
    countChanges(service);

    service.refresh();
    EXPECT_EQ(accessibilityChanges + postEventChanges, 0);

    tree.trusted = false;
    service.refresh();
    EXPECT_EQ(accessibilityChanges, 1);
    EXPECT_EQ(postEventChanges, 0);
    EXPECT_FALSE(service.accessibilityGranted());

    keyEvents.allowed = false;
    service.refresh();
    EXPECT_EQ(accessibilityChanges, 1);
    EXPECT_EQ(postEventChanges, 1);
    EXPECT_FALSE(service.postEventGranted());
}

TEST_F(PermissionsServiceTest, aChangeThatTheSessionReportsIsPublishedAtOnce)
{
    tree.trusted = false;
    keyEvents.allowed = false;
    PermissionsService service(tree, keyEvents);

    tree.trusted = true;
    Q_EMIT tree.trustChanged();
    EXPECT_TRUE(service.accessibilityGranted());

    keyEvents.allowed = true;
    Q_EMIT keyEvents.postingAllowedChanged();
    EXPECT_TRUE(service.postEventGranted());
}

TEST_F(PermissionsServiceTest, aRequestAsksTheSessionAndReadsBothGrants)
{
    tree.trusted = false;
    keyEvents.allowed = false;
    PermissionsService service(tree, keyEvents);
    tree.trusted = true;
    keyEvents.allowed = true;

    service.requestAccessibility();

    EXPECT_EQ(tree.trustRequests, 1);
    EXPECT_EQ(keyEvents.requests, 0);
    EXPECT_TRUE(service.accessibilityGranted());
    EXPECT_TRUE(service.postEventGranted());
}

TEST_F(PermissionsServiceTest, aRequestForPostingAsksTheSessionAndReadsBothGrants)
{
    tree.trusted = false;
    keyEvents.allowed = false;
    PermissionsService service(tree, keyEvents);
    tree.trusted = true;
    keyEvents.allowed = true;

    service.requestPostEvent();

    EXPECT_EQ(tree.trustRequests, 0);
    EXPECT_EQ(keyEvents.requests, 1);
    EXPECT_TRUE(service.accessibilityGranted());
    EXPECT_TRUE(service.postEventGranted());
}

TEST_F(PermissionsServiceTest, twoRequestsHalfASecondApartLeaveOneSeriesThatStartsAtTheSecond)
{
    PermissionsService service(tree, keyEvents);
    service.requestAccessibility();
    const auto firstRequest = tree.now();
    ASSERT_TRUE(waitUntil([&] { return tree.now() >= firstRequest + 500ms; }));

    tree.reads.clear();
    service.requestPostEvent();
    const auto secondRequest = tree.now();
    // The series of the first request would read again at 1.3 s, which is 0.8 s from here.
    ASSERT_TRUE(waitUntil([&] { return tree.now() >= secondRequest + 1000ms; }));

    ASSERT_EQ(tree.reads.size(), 2);
    expectRead(tree.reads.at(1), secondRequest + 300ms);
}

TEST_F(PermissionsServiceTest, aDestroyedServiceReadsNothingMore)
{
    auto service = std::make_unique<PermissionsService>(tree, keyEvents);
    service->scheduleFollowUpRefreshes();
    const auto start = tree.now();
    service.reset();
    tree.reads.clear();

    ASSERT_TRUE(waitUntil([&] { return tree.now() >= start + 400ms; }));

    EXPECT_TRUE(tree.reads.isEmpty());
}

// The whole series, once: it takes as long as users get to answer the session's question.
TEST_F(PermissionsServiceTest, grantsAreReadAgainFourTimesAndAGrantMadeMeanwhileIsPublished)
{
    tree.trusted = false;
    PermissionsService service(tree, keyEvents);
    countChanges(service);
    service.requestAccessibility();
    const auto start = tree.now();
    tree.reads.clear();

    ASSERT_TRUE(waitUntil([&] { return tree.now() >= start + 2000ms; }));
    tree.trusted = true;
    EXPECT_EQ(tree.reads.size(), 2);
    EXPECT_FALSE(service.accessibilityGranted());
    ASSERT_TRUE(waitUntil([&] { return service.accessibilityGranted(); }));
    ASSERT_EQ(tree.reads.size(), 3);
    ASSERT_TRUE(waitUntil([&] { return tree.reads.size() == 4; }, 7s));
    ASSERT_FALSE(waitUntil([&] { return tree.reads.size() > 4; }, 500ms));

    const std::chrono::milliseconds due[] = {300ms, 1300ms, 3300ms, 8300ms};
    for (int i = 0; i < 4; ++i)
        expectRead(tree.reads.at(i), start + due[i]);
    EXPECT_EQ(accessibilityChanges, 1);
    EXPECT_EQ(postEventChanges, 0);
}
