// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <stdexcept>
#include <utility>

namespace Cloud {

/// A request that cannot be carried out, with the answer that says so. Thrown on the way down from the
/// router, which sends it; a transaction that is open then is rolled back.
class RequestRefused : public std::runtime_error
{
public:
    explicit RequestRefused(Response answer)
        : std::runtime_error("the request was refused")
        , m_answer(std::move(answer))
    {
    }

    const Response &answer() const { return m_answer; }

private:
    Response m_answer;
};

} // namespace Cloud
