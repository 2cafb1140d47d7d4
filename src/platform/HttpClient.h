#pragma once

#include "platform/Clock.h"
#include "platform/Interface.h"

#include <QString>

#include <functional>
#include <memory>

namespace platform {

/// Asks HTTP/1.1 servers on the local network. No proxy is used, whatever the environment says.
class HttpClient : public Interface {
public:
    [[nodiscard]] static std::unique_ptr<HttpClient> create();

    /// The status code of the answer to a GET of `url`, redirections not followed; 0 when there is
    /// no HTTP answer within `limit`, or when `isCancelled`, asked ten times a second, says so.
    /// Blocks; serves one thread at a time.
    [[nodiscard]] virtual int getStatus(
        const QString& url, Duration limit, const std::function<bool()>& isCancelled)
        = 0;
};

} // namespace platform
