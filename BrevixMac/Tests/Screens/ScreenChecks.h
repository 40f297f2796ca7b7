// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

class QWidget;

/// What every screen must keep to, whatever it shows. Each check gives one sentence for each fault it finds.
namespace ScreenChecks {

/// What the pointer or the keyboard can act on and that is shown now.
QList<QWidget *> controls(const QWidget &screen);

/// How a widget is called in these sentences.
QString nameOf(const QWidget &widget);

/// Every control tells screen readers what it is and what it is called.
QStringList unnamedControls(const QWidget &screen);

/// Every control can be hit: 28 pixels in both directions.
QStringList smallTargets(const QWidget &screen);

/// Every text is shown whole, or is told in full where it is cut short.
QStringList cutTexts(const QWidget &screen);

/// Everything has the room that it needs, inside what holds it, and apart from what stands beside it.
QStringList squeezedWidgets(const QWidget &screen);

QStringList all(const QWidget &screen);

} // namespace ScreenChecks
