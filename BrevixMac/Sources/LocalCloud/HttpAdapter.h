// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <QSslConfiguration>
#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace Cloud {

/// Serves HTTP/1.1 on a listening socket and hands each complete request to one function. The only place that
/// knows the HTTP library, and where the limits are kept that the library lacks. Belongs to the thread that
/// made it, whose event loop it runs on.
class HttpAdapter
{
public:
    using Handler = std::function<Response(const Request &)>;

    /// Whether the connection with this descriptor may speak at all.
    using Admission = std::function<bool(qintptr)>;

    struct Limits
    {
        int connections = 128;                            ///< further ones are closed at once
        qsizetype headSize = qsizetype(32) * 1024;        ///< bytes; a larger head is answered with 431
        qsizetype bodySize = qsizetype(10) * 1024 * 1024; ///< bytes; a larger body is answered with 413
        /// A request must have come whole, and some of an answer must have been taken, within this time.
        std::chrono::milliseconds stall = std::chrono::seconds(15);
        /// How long an answer that is not known at once may take.
        std::chrono::milliseconds answer = std::chrono::seconds(90);
        /// How long a connection may wait for its next request; longer than the library's refresh interval.
        std::chrono::milliseconds idle = std::chrono::seconds(120);
    };

    /// Without @p admission everybody may speak who reaches the socket.
    HttpAdapter(Handler handler, Limits limits, Admission admission = {});
    ~HttpAdapter();

    /// Takes over @p listeningSocket and speaks HTTPS on it when @p tls holds a certificate and its key.
    /// False when it is no socket.
    bool serve(qintptr listeningSocket, std::optional<QSslConfiguration> tls = {});

    HttpAdapter(const HttpAdapter &) = delete;
    HttpAdapter &operator=(const HttpAdapter &) = delete;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace Cloud
