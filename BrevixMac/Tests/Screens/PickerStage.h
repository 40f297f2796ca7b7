// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MenuBarController.h"
#include "MenuBarPickerPanel.h"
#include "MenuBarPickerView.h"
#include "PickerDesk.h"
#include "PickerFooter.h"
#include "PickerList.h"
#include "PickerSearchPage.h"
#include "TextField.h"

#include "Support/Waiting.h"

#include <QTest>

#include <gtest/gtest.h>

/// A picker panel on screen over a PickerDesk, driven by keys and clicks.
struct PickerStage
{
    PickerDesk desk;
    std::unique_ptr<MenuBarController> controller;

    /// Makes the coordinator, the panel, and opens it as the hotkey does.
    void open()
    {
        install();
        desk.press();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&panel()));
        ASSERT_TRUE(waitUntil([this] { return search().hasFocus(); }));
    }

    void install()
    {
        desk.start();
        controller = std::make_unique<MenuBarController>(desk.statusItem, desk.workspace, desk.eventMonitor);
        controller->install(*desk.appState);
    }

    AppState &appState() { return *desk.appState; }
    MenuBarPickerPanel &panel() { return *controller->panel(); }
    MenuBarPickerView &view() { return panel().view(); }
    PickerSearchPage &page() { return view().searchPage(); }
    TextField &search() { return page().searchField(); }
    PickerList &list() { return page().list(); }

    /// A key to whatever has the focus in the panel.
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget *focus = panel().focusWidget();
        QTest::keyClick(focus ? focus : &panel(), key, modifiers);
    }

    void type(const QString &text) { QTest::keyClicks(panel().focusWidget(), text); }

    QString selectedID()
    {
        const PickerResult *result = list().selectedResult();
        return result ? result->id() : QString();
    }

    QString fieldText() { return desk.field().value.value_or(QString()); }
};
