#include "core/Settings.h"

#include "platform/Files.h"
#include "platform/ThreadQueue.h"
#include "platform/UserFolders.h"

#include <QFileInfo>
#include <QMap>
#include <QSettings>

#include <algorithm>
#include <future>
#include <map>
#include <mutex>
#include <utility>

namespace ferrylane {

namespace {

constexpr mode_t settingsFolderMode = 0700;
constexpr mode_t settingsFileMode = 0600;
/// Many thousands of settings.
constexpr qint64 maximumFileBytes = 4 << 20;

/// The values written without quotes at the top level. People write paths in this way, and what
/// stands there is what they mean; QSettings would take a comma, a semicolon or a backslash in them
/// for something else.
QMap<QString, QString> unquotedValues(const QByteArray& content)
{
    QMap<QString, QString> values;
    bool isTopLevel = true;
    for (const QByteArray& written : content.split('\n')) {
        const QByteArray line = written.trimmed();
        if (line.startsWith('[')) isTopLevel = line.toLower() == "[general]";
        const qsizetype equals = line.indexOf('=');
        if (!isTopLevel || equals <= 0 || line.startsWith('[') || line.startsWith(';')) continue;
        const QString key = QString::fromUtf8(line.first(equals).trimmed());
        QString value = QString::fromUtf8(line.sliced(equals + 1).trimmed());
        // QSettings writes a value that is no text with a single @, a text's own @ as two.
        const bool isForQSettings
            = value.startsWith(u'"') || (value.startsWith(u'@') && !value.startsWith(u"@@"));
        if (isForQSettings) {
            values.remove(key); // the last one counts
            continue;
        }
        if (value.startsWith(u'@')) value.remove(0, 1);
        // The two that QSettings escapes without quotes.
        for (qsizetype at = 0; (at = value.indexOf(u'\\', at)) >= 0; ++at) {
            const QStringView next = QStringView(value).mid(at + 1, 1);
            if (next == u"\\" || next == u"\"") value.remove(at, 1);
        }
        values.insert(key, value);
    }
    return values;
}

void setText(QSettings& file, const QString& key, const QString& text)
{
    // QSettings does not quote control characters in a text: they would be read as backslashes.
    const bool hasControl
        = std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x20; });
    file.setValue(key, hasControl ? QVariant(text.toUtf8()) : QVariant(text));
}

/// The file, with each value as it is meant; null when it is there but cannot be read.
std::unique_ptr<QSettings> openFile(const QString& path, std::error_code& error)
{
    // Before QSettings, which would wait for ever for a FIFO.
    auto content = platform::readFile(path, maximumFileBytes, error);
    if (error == std::errc::no_such_file_or_directory) error = {};
    if (error) return nullptr;
    auto file = std::make_unique<QSettings>(path, QSettings::IniFormat);
    constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
    if (content && content->startsWith(byteOrderMark)) content->remove(0, byteOrderMark.size());
    const auto values = unquotedValues(content.value_or(QByteArray()));
    for (auto value = values.begin(); value != values.end(); ++value) {
        if (file->value(value.key()) != *value) setText(*file, value.key(), *value);
    }
    return file;
}

} // namespace

struct Settings::State {
    using Changes = QMap<QString, std::optional<QString>>;

    explicit State(QString filePath) : path(std::move(filePath))
    {
        // What somebody has opened to others is closed; where that is not permitted, it serves all
        // the same.
        static_cast<void>(platform::setMode(QFileInfo(path).absolutePath(), settingsFolderMode));
        static_cast<void>(platform::setMode(path, settingsFileMode));
        std::error_code error;
        const auto file = openFile(path, error);
        if (!file) return;
        for (const QString& key : file->childKeys()) {
            if (!key.isEmpty()) values.insert(key, file->value(key).toString());
        }
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
        if (!writer) writer = std::make_unique<platform::ThreadQueue>("ferrylane.settings");
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
        std::error_code error
            = platform::createFolders(QFileInfo(path).absolutePath(), settingsFolderMode);
        // QSettings keeps the mode of a file that is there, and would create one that all can read.
        if (!error) static_cast<void>(platform::appendToFile(path, {}, settingsFileMode));
        const auto file = error ? nullptr : openFile(path, error);
        if (!file) return error;
        for (auto change = all.begin(); change != all.end(); ++change) {
            if (*change) {
                setText(*file, change.key(), **change);
            } else {
                file->remove(change.key());
            }
        }
        file->sync();
        // QSettings does not tell more. A damaged line it reports, too, and has written the rest.
        return std::make_error_code(
            file->status() == QSettings::AccessError ? std::errc::io_error : std::errc());
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

    const QString path;
    std::mutex mutex;
    QMap<QString, QString> values;
    Changes changes; ///< not in the file yet
    bool isWriteDue = false;
    std::error_code lastError;
    /// Since the first change: who only reads needs no thread.
    std::unique_ptr<platform::ThreadQueue> writer;
};

Settings::Settings(const QString& filePath) : state_(std::make_unique<State>(filePath)) {}

Settings::~Settings()
{
    flush();
}

std::optional<QString> Settings::string(const QString& key) const
{
    const std::lock_guard lock(state_->mutex);
    const auto value = state_->values.constFind(key);
    return value == state_->values.constEnd() ? std::nullopt : std::optional(*value);
}

bool Settings::boolean(const QString& key, bool fallback) const
{
    const QString word = string(key).value_or(QString()).trimmed().toLower();
    if (word == u"true" || word == u"yes" || word == u"1") return true;
    if (word == u"false" || word == u"no" || word == u"0") return false;
    return fallback;
}

qint64 Settings::integer(const QString& key) const
{
    // toLongLong() gives 0 for what is no integer.
    return string(key).value_or(QString()).toLongLong();
}

QStringList Settings::keys() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->values.keys();
}

void Settings::set(const QString& key, const QVariant& value)
{
    state_->change(key, value.toString());
}

void Settings::remove(const QString& key)
{
    state_->change(key, std::nullopt);
}

std::error_code Settings::flush()
{
    return state_->flush();
}

Settings& userSettings()
{
    static std::mutex mutex;
    // Never freed: a thread that outlives main() may still read a setting.
    // NOLINTNEXTLINE(*-avoid-non-const-global-variables): the one default object, under its mutex
    static auto& all = *new std::map<QString, std::unique_ptr<Settings>>;

    const QString path = platform::userConfigFolder() + QStringLiteral("/Ferrylane/settings.ini");
    const std::lock_guard lock(mutex);
    auto& settings = all[path];
    if (!settings) settings = std::make_unique<Settings>(path);
    return *settings;
}

} // namespace ferrylane
