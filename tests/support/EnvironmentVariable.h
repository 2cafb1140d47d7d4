#pragma once

#include <QByteArray>

#include <utility>

namespace support {

/// Sets an environment variable, or unsets it, and puts it back in the end. While other threads
/// read the environment it must not be used.
class EnvironmentVariable {
public:
    explicit EnvironmentVariable(QByteArray name)
        : name_(std::move(name))
        , wasSet_(qEnvironmentVariableIsSet(name_.constData()))
        , before_(qgetenv(name_.constData()))
    {
        unset();
    }
    EnvironmentVariable(QByteArray name, const QByteArray& value)
        : EnvironmentVariable(std::move(name))
    {
        set(value);
    }
    ~EnvironmentVariable()
    {
        if (wasSet_) {
            set(before_);
        } else {
            unset();
        }
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

    void set(const QByteArray& value) const { qputenv(name_.constData(), value); }
    void unset() const { qunsetenv(name_.constData()); }

private:
    QByteArray name_;
    bool wasSet_;
    QByteArray before_;
};

} // namespace support
