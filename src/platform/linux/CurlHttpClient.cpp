#include "platform/HttpClient.h"

#include <curl/curl.h>

#include <chrono>
#include <mutex>
#include <stdexcept>

namespace platform {

namespace {

// What is read of an answer's body, of which nothing is wanted.
constexpr std::size_t maximumBodyBytes = 65536;
constexpr int stepMilliseconds = 100;

void initialiseLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            throw std::runtime_error("libcurl does not start");
        }
    });
}

/// A write function: takes bytes up to the limit and ends the transfer beyond it.
std::size_t discard(char* /*bytes*/, std::size_t size, std::size_t count, void* taken)
{
    auto& total = *static_cast<std::size_t*>(taken);
    total += size * count;
    return total <= maximumBodyBytes ? size * count : 0;
}

class CurlHttpClient final : public HttpClient {
public:
    CurlHttpClient()
    {
        initialiseLibrary();
        transfers_.reset(curl_multi_init());
        transfer_.reset(curl_easy_init());
        if (!transfers_ || !transfer_) throw std::bad_alloc();
    }

    int getStatus(
        const QString& url, Duration limit, const std::function<bool()>& isCancelled) override
    {
        std::size_t bodyBytes = 0;
        prepare(url, limit, bodyBytes);
        if (curl_multi_add_handle(transfers_.get(), transfer_.get()) != CURLM_OK) return 0;
        while (goesOn() && !isCancelled()) {
            curl_multi_poll(transfers_.get(), nullptr, 0, stepMilliseconds, nullptr);
        }
        long status = 0;
        curl_easy_getinfo(transfer_.get(), CURLINFO_RESPONSE_CODE, &status);
        curl_multi_remove_handle(transfers_.get(), transfer_.get());
        return isCancelled() ? 0 : static_cast<int>(status);
    }

private:
    void prepare(const QString& url, Duration limit, std::size_t& bodyBytes)
    {
        CURL* const transfer = transfer_.get();
        const auto milliseconds
            = std::chrono::duration_cast<std::chrono::milliseconds>(limit).count();
        curl_easy_reset(transfer);
        curl_easy_setopt(transfer, CURLOPT_URL, url.toUtf8().constData());
        curl_easy_setopt(transfer, CURLOPT_PROTOCOLS_STR, "http");
        curl_easy_setopt(transfer, CURLOPT_PROXY, "");
        curl_easy_setopt(transfer, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(transfer, CURLOPT_TIMEOUT_MS, static_cast<long>(milliseconds));
        // The peer closes after each answer.
        curl_easy_setopt(transfer, CURLOPT_FORBID_REUSE, 1L);
        curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &discard);
        curl_easy_setopt(transfer, CURLOPT_WRITEDATA, &bodyBytes);
    }

    [[nodiscard]] bool goesOn()
    {
        int running = 0;
        return curl_multi_perform(transfers_.get(), &running) == CURLM_OK && running > 0;
    }

    struct Cleanup {
        void operator()(CURL* transfer) const { curl_easy_cleanup(transfer); }
    };
    struct MultiCleanup {
        void operator()(CURLM* transfers) const { curl_multi_cleanup(transfers); }
    };

    std::unique_ptr<CURLM, MultiCleanup> transfers_;
    std::unique_ptr<CURL, Cleanup> transfer_;
};

} // namespace

std::unique_ptr<HttpClient> HttpClient::create()
{
    return std::make_unique<CurlHttpClient>();
}

} // namespace platform
