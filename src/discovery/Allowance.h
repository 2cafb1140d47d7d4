#pragma once

#include "platform/Clock.h"

#include <algorithm>
#include <utility>

namespace ferrylane {

/// What may be done now and then: it fills at a steady rate up to its size. For one thread.
class Allowance {
public:
    Allowance(double perSecond, double size) : perSecond_(perSecond), size_(size), left_(size) {}

    /// Takes one, if `reserve` are left then.
    [[nodiscard]] bool take(platform::TimePoint now, double reserve = 0)
    {
        left_ += platform::seconds(now - std::exchange(filled_, now)) * perSecond_;
        left_ = std::min(left_, size_);
        if (left_ < 1 + reserve) return false;
        left_ -= 1;
        return true;
    }

private:
    double perSecond_;
    double size_;
    double left_;
    platform::TimePoint filled_;
};

} // namespace ferrylane
