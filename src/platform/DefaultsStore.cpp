#include "platform/DefaultsStore.h"

#include "platform/Files.h"
#include "platform/IniText.h"
#include "platform/ThreadQueue.h"

#include <QFileInfo>

#include <future>
#include <mutex>
#include <utility>

namespace platform {

namespace {

constexpr mode_t ownersFolder = 0700;
constexpr mode_t ownersFile = 0600;
/// Many thousands of settings.
constexpr qint64 maximumFileBytes = 4 << 20;

std::optional<bool> booleanIn(const QString& text)
{
    const QString word = text.trimmed().toLower();
    if (word == u"true" || word == u"yes" || word == u"1") return true;
    if (word == u"false" || word == u"no" || word == u"0") return false;
    return std::nullopt;
}

/// The file itself where the path is a link to it, as with settings that are kept in one place for
/// several computers: writing would replace the link.
QString withoutLink(const QString& path)
{
    const QFileInfo info(path);
    return info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
}

} // namespace

struct DefaultsStore::State {
    using Changes = QMap<QString, std::optional<QString>>;

    explicit State(const QString& filePath)
        : folder(QFileInfo(filePath).absolutePath()), path(withoutLink(filePath))
    {
        // What somebody has opened to others is closed; where that is not permitted, it serves all
        // the same.
        static_cast<void>(setMode(folder, ownersFolder));
        static_cast<void>(setMode(path, ownersFile));
        values = iniValues(readFile(path, maximumFileBytes).value_or(QByteArray()));
    }

    void change(const QString& key, const std::optional<QString>& value)
    {
        const std::lock_guard lock(mutex);
        if (value) {
            values.insert(key, *value);
        } else {
            values.remove(key);
        }
        changes.insert(key, value);
        if (!writer) writer = std::make_unique<ThreadQueue>("ferrylane.settings");
        // One that has not begun takes this change with it.
        if (std::exchange(isWriteDue, true)) return;
        writer->async([this] { write(); });
    }

    void write()
    {
        Changes all;
        {
            const std::lock_guard lock(mutex);
            isWriteDue = false;
            all = std::exchange(changes, {});
        }
        const std::error_code error = store(all);
        const std::lock_guard lock(mutex);
        lastError = error;
        if (!error) return;
        // Tried again with the next change, but for what has changed again meanwhile.
        all.insert(changes);
        changes = std::move(all);
    }

    [[nodiscard]] std::error_code store(const Changes& all) const
    {
        if (const auto error = createFolders(folder, ownersFolder)) return error;
        std::error_code error;
        const auto text = readFile(path, maximumFileBytes, error);
        if (error && error != std::errc::no_such_file_or_directory) return error;
        const QByteArray changed = withIniValues(text.value_or(QByteArray()), all);
        return writeFileAtomically(path, bytesOf(changed), ownersFile).failure;
    }

    std::error_code flush()
    {
        std::promise<void> written;
        {
            const std::lock_guard lock(mutex);
            if (!writer) return {};
            writer->async([&written] { written.set_value(); });
        }
        written.get_future().wait();
        const std::lock_guard lock(mutex);
        return lastError;
    }

    const QString folder;
    const QString path;
    std::mutex mutex;
    QMap<QString, QString> values;
    Changes changes; ///< not in the file yet: what is in it others may change again
    bool isWriteDue = false;
    std::error_code lastError;
    /// Since the first change: who only reads needs no thread.
    std::unique_ptr<ThreadQueue> writer;
};

DefaultsStore::DefaultsStore(const QString& filePath) : state_(std::make_unique<State>(filePath)) {}

DefaultsStore::~DefaultsStore()
{
    flush();
}

bool DefaultsStore::contains(const QString& key) const
{
    return string(key).has_value();
}

std::optional<QString> DefaultsStore::string(const QString& key) const
{
    const std::lock_guard lock(state_->mutex);
    const auto value = state_->values.constFind(key);
    return value == state_->values.constEnd() ? std::nullopt : std::optional(*value);
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
    return state_->values.keys();
}

void DefaultsStore::set(const QString& key, const QVariant& value)
{
    state_->change(key, value.toString());
}

void DefaultsStore::remove(const QString& key)
{
    state_->change(key, std::nullopt);
}

std::error_code DefaultsStore::flush()
{
    return state_->flush();
}

} // namespace platform
