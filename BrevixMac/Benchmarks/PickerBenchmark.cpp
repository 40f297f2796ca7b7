// SPDX-License-Identifier: GPL-3.0-or-later
// From a key in the picker's search field to the repainted panel, with 500 prompts and 500 skills of 2 KiB.
#include "ScreenBenchmark.h"
#include "Screens/PickerStage.h"

namespace {

/// Types a word letter by letter and takes it back, over and over; one iteration is one key.
void keystrokeToRepaintedPanel(benchmark::State &state)
{
    PickerStage stage;
    ScreenBenchmark::addLargeLibrary(stage.desk.server);
    stage.open();
    const Qt::Key letters[] = {Qt::Key_R, Qt::Key_E, Qt::Key_A, Qt::Key_D, Qt::Key_E, Qt::Key_R};
    std::size_t position = 0;
    for (auto _ : state) {
        const bool forth = position < std::size(letters);
        QTest::keyClick(QApplication::focusWidget(), forth ? letters[position] : Qt::Key_Backspace);
        QCoreApplication::sendPostedEvents();
        stage.panel().repaint();
        position = (position + 1) % (2 * std::size(letters));
    }
}
BENCHMARK(keystrokeToRepaintedPanel)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return ScreenBenchmark::run(argc, argv);
}
