#pragma once

#include "protocol/HttpAnswer.h"
#include "protocol/RequestHeadParser.h"
#include "protocol/V4Stream.h"

#include <optional>
#include <variant>

namespace ferrylane {

/// The page that a browser shows for a pairing link. Its button hands the link's address and key on
/// to the phone application; the page itself knows no secret.
[[nodiscard]] HttpAnswer landingPage();

/// What a request asks for.
namespace routes {

struct Readiness {};
struct Identify {
    std::optional<QString> challenge;
};
struct Upload {
    /// None when the head lacks what a transfer needs for its records to be opened.
    std::optional<V4Transfer> transfer;
    std::optional<QString> senderName;
};

} // namespace routes

/// An HttpAnswer is one that depends on the request alone.
using Route = std::variant<HttpAnswer, routes::Readiness, routes::Identify, routes::Upload>;

/// Method and target are compared exactly and with regard to letter case; a query string makes
/// another target.
[[nodiscard]] Route route(const RequestHead& head);

} // namespace ferrylane
