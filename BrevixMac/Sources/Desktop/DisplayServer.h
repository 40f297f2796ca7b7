// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcessEnvironment>
#include <QString>

#include <optional>

/// What is known of the display before there is an application object. Main thread, before QApplication.
namespace DisplayServer {

/// Why no window could be shown in this session; nothing when one can. Asks the display server once.
std::optional<QString> problem();

/// Sets Qt's platform to the one whose mechanisms this session supports, unless the user chose one.
void choosePlatform();

/// The environment without what choosePlatform() has set, which other programs must not inherit from us.
QProcessEnvironment environmentForPrograms();

} // namespace DisplayServer
