// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Foundation/TerminationSignals.h"

#include <csignal>

/// Holds the signals back that end a program, as the application does, for the time of a test.
class SignalsHeldBack
{
public:
    SignalsHeldBack()
    {
        pthread_sigmask(SIG_SETMASK, nullptr, &m_former);
        TerminationSignals::holdBack();
    }
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }

    SignalsHeldBack(const SignalsHeldBack &) = delete;
    SignalsHeldBack &operator=(const SignalsHeldBack &) = delete;

private:
    sigset_t m_former{};
};
