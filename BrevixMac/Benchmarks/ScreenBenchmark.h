// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/LibraryServer.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <gtest/gtest.h>

/// What the benchmarks of screens share: a library to show, and a program around them.
namespace ScreenBenchmark {

/// Text of 2 KiB with one variable.
inline QString textOf(int number)
{
    const QString sentence =
        QStringLiteral("Rewrite the paragraph number %1 for a busy reader and keep {{facts}}. ");
    QString text;
    while (text.size() < 2048)
        text += sentence.arg(number);
    return text.first(2048);
}

/// 20 categories, 500 prompts and 500 skills.
inline void addLargeLibrary(LibraryServer &server)
{
    for (int number = 0; number < 20; ++number)
        server.addCategory(QString::number(number), QStringLiteral("Category %1").arg(number),
                           QStringLiteral("#8b5cf6"));
    for (int number = 0; number < 500; ++number) {
        const QString id = QString::number(number);
        server.addPrompt(id, QStringLiteral("Prompt for readers %1").arg(number), textOf(number),
                         QString::number(number % 20));
        server.addSkill(id, QStringLiteral("Skill of writers %1").arg(number), textOf(number));
    }
}

/// The main function: runs the registered benchmarks in a program with a display.
inline int run(int argc, char **argv)
{
    const QApplication application(argc, argv);
    testing::InitGoogleTest();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

} // namespace ScreenBenchmark
