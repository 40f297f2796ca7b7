// SPDX-License-Identifier: GPL-3.0-or-later
#include "Diagnostics.h"

#include "AppState.h"

QList<QPair<QString, QString>> Diagnostics::rows(AppState &appState)
{
    const AppConfiguration &configuration = appState.configuration();
    const FocusedTargetPtr &target = appState.focusedTarget();
    const auto application = target ? target->applicationName : std::nullopt;
    const auto role = target ? target->role : std::nullopt;
    return {
        {QStringLiteral("Bundle ID"), configuration.firebase.bundleID},
        {QStringLiteral("Firebase Project"), configuration.firebase.projectID},
        {QStringLiteral("Logical Library App ID"), configuration.logicalLibraryAppID},
        {QStringLiteral("Sync"), appState.libraryStore().syncState().title()},
        {QStringLiteral("Focused App"), application.value_or(QStringLiteral("None"))},
        {QStringLiteral("Focused Role"), role.value_or(QStringLiteral("Unknown"))},
    };
}

QString Diagnostics::text(AppState &appState)
{
    QStringList lines;
    for (const auto &[label, value] : rows(appState))
        lines.append(label + u": " + value);
    if (const auto &issue = appState.configurationIssue())
        lines.append(u"Configuration Issue: " + *issue);
    if (const auto &result = appState.lastInsertionResult())
        lines.append(u"Last Insertion: " + result->message);
    return lines.join(u'\n');
}
