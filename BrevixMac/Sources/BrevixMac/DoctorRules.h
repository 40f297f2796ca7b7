// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Doctor.h"

#include <array>

/// How each row of an examination follows from what was found. Pure functions.
namespace DoctorRules {

struct Finding
{
    DoctorRow::State state = DoctorRow::State::unknown;
    QString reason;
    QString fix = {};
};

struct Rule
{
    const char *id;
    const char *title;
    Finding (*find)(const SessionFacts &session, const InstanceFacts &instance);
};

/// In the order in which they are shown.
const std::array<Rule, 7> &all();

/// The kind of session for people.
QString sessionName(const SessionFacts &session);

} // namespace DoctorRules
