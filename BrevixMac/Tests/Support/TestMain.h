// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// From now until the end of the running test, a logged warning that contains @p fragment is expected. Any
/// other warning fails the test it appears in.
void expectWarning(const QString &fragment);
