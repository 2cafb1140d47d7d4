#pragma once

#include <asio/error.hpp>

#include <system_error>

namespace platform {

/// Asio gives errors of the system a category of its own, which compares unequal to every
/// std::errc. Errors are put into the standard's category before they are compared or handed out.
[[nodiscard]] inline std::error_code systemError(const std::error_code& error)
{
    const bool isAsios = error.category() == asio::error::get_system_category();
    return isAsios ? std::error_code(error.value(), std::system_category()) : error;
}

} // namespace platform
