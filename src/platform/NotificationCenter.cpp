#include "platform/NotificationCenter.h"

#include <algorithm>
#include <vector>

namespace platform {

/// Touched on the main queue only.
struct NotificationCenter::Observers {
    struct Observer {
        quint64 id;
        QString name;
        std::shared_ptr<Handler> handler;
    };

    std::vector<Observer> list;
    quint64 lastId = 0;

    void remove(quint64 id)
    {
        std::erase_if(list, [id](const Observer& observer) { return observer.id == id; });
    }

    void deliver(const QString& name, const Payload& payload) const
    {
        // A handler may observe or stop observing: walk a copy, and look again before each call.
        const std::vector<Observer> current = list;
        for (const Observer& observer : current) {
            if (observer.name == name && isObserving(observer.id)) (*observer.handler)(payload);
        }
    }

    [[nodiscard]] bool isObserving(quint64 id) const
    {
        return std::any_of(
            list.begin(), list.end(), [id](const Observer& o) { return o.id == id; });
    }
};

NotificationCenter::NotificationCenter(SerialQueue& mainQueue)
    : mainQueue_(mainQueue), observers_(std::make_shared<Observers>())
{
}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter::Observation NotificationCenter::observe(const QString& name, Handler handler)
{
    const quint64 id = ++observers_->lastId;
    observers_->list.push_back({id, name, std::make_shared<Handler>(std::move(handler))});
    return Observation([weak = std::weak_ptr(observers_), id] {
        if (const auto observers = weak.lock()) observers->remove(id);
    });
}

void NotificationCenter::deliver(const QString& name, const Payload& payload)
{
    // A handler may be the end of the centre.
    const auto observers = observers_;
    observers->deliver(name, payload);
}

void NotificationCenter::post(const QString& name, Payload payload)
{
    mainQueue_.async([weak = std::weak_ptr(observers_), name, payload = std::move(payload)] {
        if (const auto observers = weak.lock()) observers->deliver(name, payload);
    });
}

} // namespace platform
