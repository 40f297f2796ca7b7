// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Targets.h"

#include "Desktop/AtSpi/AtSpiAccessibilityTree.h"

#include <gtest/gtest.h>

/// Tests that read and write real programs through one tree.
class AccessibleFields : public testing::Test
{
protected:
    void SetUp() override;

    /// Waits until the tree knows a focused element of @p pid that has the attribute @p role.
    AccessibilityElement focusedElement(qint64 pid, const QString &role);

    std::optional<QString> textAttribute(const AccessibilityElement &element, const QString &name);
    std::optional<TextRange> range(const AccessibilityElement &element);
    bool select(const AccessibilityElement &element, TextRange range);

    /// The direct insertion as the insertion service carries it out.
    bool insert(const AccessibilityElement &element, const QString &text);

    AtSpiAccessibilityTree tree;
};
