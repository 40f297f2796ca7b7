// SPDX-License-Identifier: GPL-3.0-or-later
#include "InsertionOutcome.h"

QString rawValue(InsertionMethod method)
{
    switch (method) {
    case InsertionMethod::hybrid:
        return QStringLiteral("hybrid");
    case InsertionMethod::accessibility:
        return QStringLiteral("accessibility");
    case InsertionMethod::clipboardPaste:
        return QStringLiteral("clipboardPaste");
    case InsertionMethod::copiedOnly:
        return QStringLiteral("copiedOnly");
    }
    Q_UNREACHABLE();
}

std::optional<InsertionMethod> insertionMethodFromRawValue(const QString &text)
{
    for (const InsertionMethod method : allInsertionMethods) {
        if (rawValue(method) == text)
            return method;
    }
    return std::nullopt;
}

QString title(InsertionMethod method)
{
    switch (method) {
    case InsertionMethod::hybrid:
        return QStringLiteral("Hybrid");
    case InsertionMethod::accessibility:
        return QStringLiteral("Accessibility");
    case InsertionMethod::clipboardPaste:
        return QStringLiteral("Clipboard Paste");
    case InsertionMethod::copiedOnly:
        return QStringLiteral("Copy Only");
    }
    Q_UNREACHABLE();
}

QString description(InsertionMethod method)
{
    switch (method) {
    case InsertionMethod::hybrid:
        return QStringLiteral("Try Accessibility first, then fall back to clipboard-preserving paste.");
    case InsertionMethod::accessibility:
        return QStringLiteral(
            "Insert directly through macOS Accessibility when the target field supports it.");
    case InsertionMethod::clipboardPaste:
        return QStringLiteral(
            "Paste through the clipboard while restoring your previous clipboard afterward.");
    case InsertionMethod::copiedOnly:
        return QStringLiteral("Copy the result and leave insertion to you.");
    }
    Q_UNREACHABLE();
}

QString rawValue(InsertionFailureReason reason)
{
    switch (reason) {
    case InsertionFailureReason::noFocusedTarget:
        return QStringLiteral("noFocusedTarget");
    case InsertionFailureReason::accessibilityUnavailable:
        return QStringLiteral("accessibilityUnavailable");
    case InsertionFailureReason::postEventUnavailable:
        return QStringLiteral("postEventUnavailable");
    case InsertionFailureReason::unsupportedTarget:
        return QStringLiteral("unsupportedTarget");
    case InsertionFailureReason::secureField:
        return QStringLiteral("secureField");
    case InsertionFailureReason::appReactivationFailed:
        return QStringLiteral("appReactivationFailed");
    case InsertionFailureReason::notConfigured:
        return QStringLiteral("notConfigured");
    case InsertionFailureReason::unknown:
        return QStringLiteral("unknown");
    }
    Q_UNREACHABLE();
}

InsertionResult InsertionResult::success(InsertionMethod method, QString message)
{
    return {.succeeded = true, .method = method, .message = std::move(message), .failureReason = {}};
}

InsertionResult InsertionResult::failure(InsertionFailureReason reason, QString message)
{
    return {.succeeded = false, .method = {}, .message = std::move(message), .failureReason = reason};
}
