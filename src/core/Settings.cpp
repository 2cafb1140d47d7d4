#include "core/Settings.h"

#include "platform/UserFolders.h"

#include <map>
#include <memory>
#include <mutex>

namespace ferrylane {

platform::DefaultsStore& standardDefaults()
{
    using Stores = std::map<QString, std::unique_ptr<platform::DefaultsStore>>;
    static std::mutex mutex;
    // Never freed: a thread that outlives main() may still read a setting.
    // NOLINTNEXTLINE(*-avoid-non-const-global-variables): the one default object, under its mutex
    static Stores& stores = *new Stores;

    const QString path = platform::userConfigFolder() + QStringLiteral("/Ferrylane/settings.ini");
    const std::lock_guard lock(mutex);
    auto& store = stores[path];
    if (!store) store = std::make_unique<platform::DefaultsStore>(path);
    return *store;
}

} // namespace ferrylane
