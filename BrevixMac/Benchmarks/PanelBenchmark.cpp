// SPDX-License-Identifier: GPL-3.0-or-later
// Opening the panel's screens and scrolling a library of 1,000 items of 2 KiB.
#include "AppWindows.h"
#include "FloatingPanelController.h"
#include "LibraryPage.h"
#include "PromptPalettePanel.h"
#include "ScreenBenchmark.h"
#include "Screens/PickerStage.h"

#include <QScrollBar>

namespace {

constexpr int pixelsPerFrame = 90; // a fast turn of the wheel

/// From the request for the library to its painted screen.
void openLibrary(benchmark::State &state)
{
    PickerStage stage;
    ScreenBenchmark::addLargeLibrary(stage.desk.server);
    stage.open();
    for (auto _ : state) {
        stage.view().setRoute(PickerPanelRoute::library);
        QCoreApplication::sendPostedEvents();
        stage.panel().repaint();
        state.PauseTiming();
        stage.view().setRoute(PickerPanelRoute::picker);
        QCoreApplication::sendPostedEvents();
        stage.panel().repaint();
        state.ResumeTiming();
    }
}
BENCHMARK(openLibrary)->Unit(benchmark::kMillisecond);

/// From the request for the quick picker, coming from the library, to its painted screen.
void returnToThePicker(benchmark::State &state)
{
    PickerStage stage;
    ScreenBenchmark::addLargeLibrary(stage.desk.server);
    stage.open();
    for (auto _ : state) {
        state.PauseTiming();
        stage.view().setRoute(PickerPanelRoute::library);
        QCoreApplication::sendPostedEvents();
        stage.panel().repaint();
        state.ResumeTiming();
        stage.view().setRoute(PickerPanelRoute::picker);
        QCoreApplication::sendPostedEvents();
        stage.panel().repaint();
    }
}
BENCHMARK(returnToThePicker)->Unit(benchmark::kMillisecond);

/// One frame of scrolling through the library, the whole panel repainted.
void scrollLibrary(benchmark::State &state)
{
    PickerStage stage;
    ScreenBenchmark::addLargeLibrary(stage.desk.server);
    stage.open();
    stage.view().setRoute(PickerPanelRoute::library);
    waitUntil([] { return false; }, std::chrono::milliseconds(200)); // past the fade
    QScrollBar &bar = *stage.view().libraryPage().list().verticalScrollBar();
    int step = pixelsPerFrame;
    for (auto _ : state) {
        if (bar.value() + step > bar.maximum() || bar.value() + step < 0)
            step = -step;
        bar.setValue(bar.value() + step);
        stage.panel().repaint();
    }
}
BENCHMARK(scrollLibrary)->Unit(benchmark::kMillisecond);

/// A letter in the library's search field, to the repainted panel.
void searchLibrary(benchmark::State &state)
{
    PickerStage stage;
    ScreenBenchmark::addLargeLibrary(stage.desk.server);
    stage.open();
    stage.view().setRoute(PickerPanelRoute::library);
    bool isTyped = false;
    for (auto _ : state) {
        QTest::keyClick(QApplication::focusWidget(), isTyped ? Qt::Key_Backspace : Qt::Key_R);
        isTyped = !isTyped;
        QCoreApplication::sendPostedEvents();
        stage.panel().repaint();
    }
}
BENCHMARK(searchLibrary)->Unit(benchmark::kMillisecond);

/// From the request for the palette, its window made before, to its painted screen.
void openPalette(benchmark::State &state)
{
    PickerStage stage;
    ScreenBenchmark::addLargeLibrary(stage.desk.server);
    stage.install();
    FloatingPanelController palette(stage.appState(), stage.desk.workspace);
    palette.show();
    palette.hide();
    for (auto _ : state) {
        palette.show();
        QCoreApplication::sendPostedEvents();
        palette.panel().repaint();
        state.PauseTiming();
        palette.hide();
        QCoreApplication::sendPostedEvents();
        state.ResumeTiming();
    }
}
BENCHMARK(openPalette)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return ScreenBenchmark::run(argc, argv);
}
