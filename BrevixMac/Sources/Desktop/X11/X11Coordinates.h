// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

/// The X server's pixel position @p native on Qt's desktop. The two differ with scaled screens. Main thread
/// only.
QPoint logicalPosition(QPoint native);
