// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/AccessibilityTree.h"
#include "Desktop/RunningApplication.h"

#include <QDateTime>
#include <QUuid>

#include <memory>
#include <optional>

/// The captured field of another application, as it was at capturedAt. Shared by identity, never changed.
struct FocusedTarget
{
    QUuid id = QUuid::createUuid();
    qint64 pid = 0;
    std::optional<QString> bundleID;
    std::optional<QString> applicationName;
    std::optional<RunningApplication> application;
    AccessibilityElement element;
    std::optional<QString> role;
    std::optional<QString> subrole;
    QDateTime capturedAt;
};

using FocusedTargetPtr = std::shared_ptr<const FocusedTarget>;
