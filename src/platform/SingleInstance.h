#pragma once

#include "platform/Clock.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

namespace platform {

/// Makes a program run once for each user of this computer. The first process has the claim until
/// this object goes or the process ends, however it ends; a later one hands over to the first what
/// it was started for, and is to end.
///
/// The claim is a lock on a folder named after the program in $XDG_RUNTIME_DIR, or, where that is
/// unset or not the user's own, on one in the folder for temporary files. A socket in it takes the
/// requests.
class SingleInstance {
public:
    enum class Outcome {
        first,      ///< this process has the claim
        handedOver, ///< another has it, and has been told
        unanswered, ///< another has it, and did not answer or end in time
    };
    /// Far more than a busy process takes to answer.
    static constexpr Duration usualPatience = std::chrono::seconds(5);
    /// For a process that does not listen: it begins, or it ends and has something to finish first.
    static constexpr Duration patienceWithEnd = std::chrono::seconds(30);

    /// Blocks for as long as the first process takes to answer, `patience` at most, or to end once
    /// it has said that it does, patienceWithEnd at most. `program` must do as a file name. Throws
    /// std::system_error when there is no folder for the claim. `request` says what a later process
    /// was started for: 64 bytes at most, and not empty.
    explicit SingleInstance(const QString& program, const QByteArray& request = "show",
        Duration patience = usualPatience);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    [[nodiscard]] Outcome outcome() const { return outcome_; }

    /// In the first process: `onRequest` is called with the request of each later process on the
    /// event loop of the calling thread, the main thread; those that already wait are included and
    /// are not answered before. Once only, and this object goes on the same thread. The handler
    /// must not destroy it.
    void setRequestHandler(std::function<void(const QByteArray& request)> onRequest);

    /// In the first process: it is about to end. The handler is called no more, and later processes
    /// wait for the claim instead of for an answer. On the thread of setRequestHandler().
    void sayThatItEnds();

private:
    class Claim;
    class Requests;

    std::unique_ptr<Claim> claim_;       ///< in the first process
    std::unique_ptr<Requests> requests_; ///< while there is a handler
    Outcome outcome_ = Outcome::unanswered;
};

} // namespace platform
