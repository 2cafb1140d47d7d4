#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>

namespace platform {

/// The user's settings: values under names, in an INI file that is written at every change, in a
/// folder that is created then. Safe from any thread. A file that cannot be read counts as empty,
/// one that cannot be written keeps the values for this run; of a damaged file the lines that can
/// be read are kept.
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

    void set(const QString& key, const QVariant& value);
    void remove(const QString& key);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
