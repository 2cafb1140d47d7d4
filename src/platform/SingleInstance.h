#pragma once

#include "platform/Clock.h"

#include <QString>

#include <functional>
#include <memory>

namespace platform {

/// Makes a program run once for each user of this computer. The first process has the claim until
/// this object goes or the process ends, however it ends; a later one asks the first to show
/// itself, and is to end.
///
/// The claim is a lock on a folder named after the program in $XDG_RUNTIME_DIR, or, where that is
/// unset or not the user's own, on one in the folder for temporary files. A socket in it takes the
/// requests.
class SingleInstance {
public:
    enum class Outcome {
        first,      ///< this process has the claim
        handedOver, ///< another has it, and has been asked to show itself
        unanswered, ///< another has it, and did not answer in time
    };
    /// Far more than a busy process takes, and than one that ends needs to end.
    static constexpr Duration usualPatience = std::chrono::seconds(5);

    /// Blocks for as long as the first process takes to answer, `patience` at most. `program` must
    /// do as a file name. Throws std::system_error when there is no folder for the claim.
    explicit SingleInstance(const QString& program, Duration patience = usualPatience);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    [[nodiscard]] Outcome outcome() const { return outcome_; }

    /// In the first process: `onShow` is called on the event loop of the calling thread, the main
    /// thread, for each request, those that already wait included: they are not answered before.
    /// Once only, and this object goes on the same thread. The handler must not destroy it.
    void setShowHandler(std::function<void()> onShow);

private:
    class Claim;
    class Requests;

    std::unique_ptr<Claim> claim_;       ///< in the first process
    std::unique_ptr<Requests> requests_; ///< while there is a handler
    Outcome outcome_ = Outcome::unanswered;
};

} // namespace platform
