// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BrevixMacApp.h"

/// `brevix doctor`: what works in this session, as the running Brevix sees it, or by a look of its own where
/// none runs.
namespace DoctorCommand {

enum class Format { text, json };

/// Prints the report on standard output. 0 when nothing fails, 1 when something does, 69 without a display
/// and a running Brevix. @p library says whose settings count when none runs. To be called before there is
/// an application object.
int run(int argc, char **argv, BrevixMacApp::Library library, Format format);

} // namespace DoctorCommand
