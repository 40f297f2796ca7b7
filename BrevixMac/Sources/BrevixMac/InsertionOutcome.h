// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>
#include <optional>

/// The preferred way of placing text.
enum class InsertionMethod { hybrid, accessibility, clipboardPaste, copiedOnly };

/// Every method in the order settings list them.
inline constexpr std::array allInsertionMethods{InsertionMethod::hybrid, InsertionMethod::accessibility,
                                                InsertionMethod::clipboardPaste, InsertionMethod::copiedOnly};

/// The stored form, and back; nothing for an unknown text.
QString rawValue(InsertionMethod method);
std::optional<InsertionMethod> insertionMethodFromRawValue(const QString &rawValue);

/// What settings show.
QString title(InsertionMethod method);
QString description(InsertionMethod method);

enum class InsertionFailureReason {
    noFocusedTarget,
    accessibilityUnavailable,
    postEventUnavailable,
    unsupportedTarget,
    secureField,
    appReactivationFailed,
    notConfigured,
    unknown,
};

QString rawValue(InsertionFailureReason reason);

/// The outcome of one insert, copy or share. A success never has a reason, a failure never a method.
struct InsertionResult
{
    bool succeeded = false;
    std::optional<InsertionMethod> method; ///< the way that placed the text
    QString message;                       ///< shown to the user as it stands
    std::optional<InsertionFailureReason> failureReason;

    static InsertionResult success(InsertionMethod method, QString message);
    static InsertionResult failure(InsertionFailureReason reason, QString message);

    bool operator==(const InsertionResult &) const = default;
};
