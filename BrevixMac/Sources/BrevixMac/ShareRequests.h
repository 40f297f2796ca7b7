// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include "Foundation/TaskScope.h"

#include <QObject>
#include <QSet>

class AppState;

/// The share requests that a window has under way. What comes of them is AppState's published state; this
/// only knows which items wait for theirs, so that nothing is requested twice at once. Main thread only.
class ShareRequests final : public QObject
{
    Q_OBJECT

public:
    /// @p appState must outlive this object.
    explicit ShareRequests(AppState &appState, QObject *parent = nullptr);

    /// @p id is a PickerResult::id() or idOf() a category.
    bool isSharing(const QString &id) const { return m_underWay.contains(id); }

    /// Both do nothing while a request for the same item is under way.
    void share(const PickerResult &result);
    void share(const PromptCategory &category);

    static QString idOf(const PromptCategory &category);

Q_SIGNALS:
    void changed();

private:
    QCoro::Task<> run(QString id, QCoro::Task<> request, std::stop_token token);

    AppState &m_appState;
    QSet<QString> m_underWay;
    TaskScope m_tasks; // keep last: stops the coroutines before the other members die
};
