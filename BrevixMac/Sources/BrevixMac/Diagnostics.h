// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPair>
#include <QString>

class AppState;

/// What the user can pass on to somebody who helps. Holds no token, no address and no text of the library.
namespace Diagnostics {

/// The rows that settings always show: label and value.
QList<QPair<QString, QString>> rows(AppState &appState);

/// The rows, and what went wrong, one a line; no line feed at the end.
QString text(AppState &appState);

} // namespace Diagnostics
