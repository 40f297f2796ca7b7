// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Tells screen readers what our windows, cards and menus are. Qt knows such widgets as mere containers, and
/// its frames as windows.
namespace AccessibleRoles {

/// For every widget that is made from now on. Once, from the main thread.
void install();

} // namespace AccessibleRoles
