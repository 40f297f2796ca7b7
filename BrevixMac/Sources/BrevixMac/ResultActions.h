// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include <QObject>

#include <functional>

class AppState;
class PickerList;
class ResultLine;
class ShareRequests;
class TextField;

/// What a screen does with the item selected in its list: insert, copy and share it, by keys in the search
/// field, by a click in the list or by the row's buttons. Main thread only.
class ResultActions final : public QObject
{
    Q_OBJECT

public:
    /// All must outlive the actions.
    struct Screen
    {
        AppState &appState;
        ShareRequests &sharing;
        TextField &search;
        PickerList &list;
        ResultLine &result;
    };

    ResultActions(const Screen &screen, QObject *parent);

    /// Takes over the copying of prompts that have variables. Without it the shared form opens for them.
    using FillBeforeCopy = std::function<void(const PromptItem &)>;
    void setFillBeforeCopy(FillBeforeCopy fill) { m_fillBeforeCopy = std::move(fill); }

    /// Each does nothing while nothing is selected. Without a place to insert into, insert() says so.
    void insert();
    void copy();
    void share();

    /// Whether the selected item is being shared.
    bool isSharing() const;

    /// Lets the selected row's buttons say what can be done now.
    void describe();

Q_SIGNALS:
    /// The target, a permission, an insertion or a share has changed what can be done.
    void circumstancesChanged();

private:
    Screen m_screen;
    FillBeforeCopy m_fillBeforeCopy;
};
