// SPDX-License-Identifier: GPL-3.0-or-later
#include "CopyFeedback.h"

#include "ThemedButton.h"

#include <QTimer>

#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::seconds shownFor{2};

const QString copied = QStringLiteral("Copied");
const QString refused = QStringLiteral("Not Copied");

} // namespace

void tellWhetherCopied(ThemedButton &button, std::function<bool()> copy)
{
    const QString label = button.text();
    auto *shown = new QTimer(&button);
    shown->setSingleShot(true);
    shown->setInterval(shownFor);
    QObject::connect(shown, &QTimer::timeout, &button, [&button, label] {
        button.setLabel(label);
        button.setMinimumWidth(0);
    });
    QObject::connect(&button, &ThemedButton::clicked, &button, [&button, shown, copy = std::move(copy)] {
        const bool done = copy();
        button.setMinimumWidth(button.width());
        button.setLabel(done ? copied : refused);
        shown->start();
    });
}
