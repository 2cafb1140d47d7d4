#include "platform/DefaultsStore.h"

#include "platform/Files.h"

#include <QEvent>
#include <QFileInfo>
#include <QSettings>

#include <mutex>

namespace platform {

namespace {

/// Settings that are written only when told to. After a change QSettings posts itself an event to
/// write later, on the thread of its making, which knows nothing of the lock held here.
class SettingsFile final : public QSettings {
public:
    explicit SettingsFile(const QString& path) : QSettings(path, QSettings::IniFormat) {}

protected:
    bool event(QEvent* event) override
    {
        return event->type() == QEvent::UpdateRequest || QSettings::event(event);
    }
};

/// A value as text: the form in which it comes back from the file, so that it reads the same before
/// and after a restart.
std::optional<QString> textOf(const QVariant& value)
{
    // A comma that somebody has written into the file without quotes.
    if (value.typeId() == QMetaType::QStringList) return value.toStringList().join(u", ");
    if (!value.canConvert<QString>()) return std::nullopt;
    return value.toString();
}

std::optional<bool> booleanIn(const QString& text)
{
    const QString word = text.trimmed().toLower();
    if (word == u"true" || word == u"yes" || word == u"1") return true;
    if (word == u"false" || word == u"no" || word == u"0") return false;
    return std::nullopt;
}

} // namespace

struct DefaultsStore::State {
    explicit State(const QString& filePath)
        : settings(filePath), folder(QFileInfo(filePath).absolutePath())
    {
    }

    void write()
    {
        // Without the folder the file cannot be written, and then the values live on in memory.
        static_cast<void>(createFolders(folder));
        settings.sync();
    }

    std::mutex mutex;
    SettingsFile settings;
    QString folder;
};

DefaultsStore::DefaultsStore(const QString& filePath) : state_(std::make_unique<State>(filePath)) {}

DefaultsStore::~DefaultsStore() = default;

bool DefaultsStore::contains(const QString& key) const
{
    const std::lock_guard lock(state_->mutex);
    return state_->settings.contains(key);
}

std::optional<QString> DefaultsStore::string(const QString& key) const
{
    const std::lock_guard lock(state_->mutex);
    if (!state_->settings.contains(key)) return std::nullopt;
    return textOf(state_->settings.value(key));
}

bool DefaultsStore::boolean(const QString& key, bool fallback) const
{
    return booleanIn(string(key).value_or(QString())).value_or(fallback);
}

qint64 DefaultsStore::integer(const QString& key) const
{
    // toLongLong() gives 0 for what is no integer.
    return string(key).value_or(QString()).toLongLong();
}

QStringList DefaultsStore::keys() const
{
    const std::lock_guard lock(state_->mutex);
    QStringList keys = state_->settings.allKeys();
    // A damaged file may hold keys that cannot be asked for, such as an empty one.
    keys.removeIf(
        [this](const QString& key) { return key.isEmpty() || !state_->settings.contains(key); });
    return keys;
}

void DefaultsStore::set(const QString& key, const QVariant& value)
{
    const std::lock_guard lock(state_->mutex);
    state_->settings.setValue(key, value);
    state_->write();
}

void DefaultsStore::remove(const QString& key)
{
    const std::lock_guard lock(state_->mutex);
    state_->settings.remove(key);
    state_->write();
}

} // namespace platform
