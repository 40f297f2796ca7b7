// SPDX-License-Identifier: GPL-3.0-or-later
// From a key in the picker's search field to the repainted panel, with 500 prompts and 500 skills of 2 KiB.
#include "Screens/PickerStage.h"

#include <benchmark/benchmark.h>

#include <QApplication>

namespace {

QString textOf(int number)
{
    const QString sentence =
        QStringLiteral("Rewrite the paragraph number %1 for a busy reader and keep the facts. ");
    QString text;
    while (text.size() < 2048)
        text += sentence.arg(number);
    return text.first(2048);
}

void addLargeLibrary(LibraryServer &server)
{
    for (int number = 0; number < 500; ++number) {
        const QString id = QString::number(number);
        server.addPrompt(id, QStringLiteral("Prompt for readers %1").arg(number), textOf(number));
        server.addSkill(id, QStringLiteral("Skill of writers %1").arg(number), textOf(number));
    }
}

/// Types a word letter by letter and takes it back, over and over; one iteration is one key.
void keystrokeToRepaintedPanel(benchmark::State &state)
{
    PickerStage stage;
    addLargeLibrary(stage.desk.server);
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
    QApplication application(argc, argv);
    testing::InitGoogleTest();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
