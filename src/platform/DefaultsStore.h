#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <system_error>

namespace platform {

/// The user's settings: values under names, in an INI file in a folder of its own, both for their
/// owner alone. Safe from any thread, and nobody waits for the disk but flush() and the destructor:
/// the values are in memory, and a thread writes what has changed, at once, several changes in one
/// step where the disk is slow. The folder is created then.
///
/// A file that cannot be read counts as empty and is left alone, one that cannot be written keeps
/// the values for this run; of a damaged file the lines that can be read count. Lines that others
/// have changed meanwhile stay.
class DefaultsStore {
public:
    explicit DefaultsStore(const QString& filePath);
    ~DefaultsStore();
    DefaultsStore(const DefaultsStore&) = delete;
    DefaultsStore& operator=(const DefaultsStore&) = delete;

    [[nodiscard]] bool contains(const QString& key) const;
    [[nodiscard]] std::optional<QString> string(const QString& key) const;
    /// true, yes and 1, or false, no and 0, in any case of letters; `fallback` when there is no
    /// value, or none that reads as a boolean.
    [[nodiscard]] bool boolean(const QString& key, bool fallback) const;
    /// 0 when there is no value, or none that reads as an integer.
    [[nodiscard]] qint64 integer(const QString& key) const;
    [[nodiscard]] QStringList keys() const;

    /// `key`: see platform/IniText.h. The value is kept as text.
    void set(const QString& key, const QVariant& value);
    void remove(const QString& key);

    /// Waits until every change made before is on the disk; tells why the last writing failed.
    std::error_code flush();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
