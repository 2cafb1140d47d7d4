#include "platform/DnsSd.h"

#include "platform/linux/BusService.h"

#include <QDBusArgument>

#include <algorithm>
#include <utility>
#include <vector>

namespace platform {

namespace {

const QString serverInterface = QStringLiteral("org.freedesktop.Avahi.Server");
const QString serverInterface2 = QStringLiteral("org.freedesktop.Avahi.Server2");
const QString entryGroupInterface = QStringLiteral("org.freedesktop.Avahi.EntryGroup");
const QString browserInterface = QStringLiteral("org.freedesktop.Avahi.ServiceBrowser");
const QString stateChanged = QStringLiteral("StateChanged");
const QString freeMethod = QStringLiteral("Free");

// Arguments of the daemon's methods.
constexpr int anyInterface = -1;
constexpr int anyProtocol = -1;
constexpr unsigned noFlags = 0;
const QString defaultDomain;
const QString thisHost;

constexpr int serverIsRunning = 2;
constexpr int groupIsEstablished = 2;
constexpr int groupHasCollision = 3; // with another computer
constexpr int groupHasFailed = 4;

/// What is kept in mind of a crowd, so that some of it can take the place of who goes.
constexpr std::size_t maximumKnown = 4096;
/// Changes within it are reported together.
constexpr auto settlingTime = std::chrono::milliseconds(200);

std::unique_ptr<BusService> avahiDaemon(SystemBusAccess access)
{
    return std::make_unique<BusService>(QStringLiteral("org.freedesktop.Avahi"),
        QStringList{serverInterface, entryGroupInterface, browserInterface}, std::move(access));
}

QDBusMessage serverMethod(const BusService& avahi, const QString& interface, const char* name)
{
    return avahi.method(QStringLiteral("/"), interface, QString::fromLatin1(name));
}

bool isError(const QDBusMessage& reply)
{
    return reply.type() != QDBusMessage::ReplyMessage;
}

bool isCollision(const QDBusMessage& reply)
{
    return reply.errorName() == u"org.freedesktop.Avahi.CollisionError";
}

QString pathIn(const QDBusMessage& reply)
{
    return reply.arguments().value(0).value<QDBusObjectPath>().path();
}

/// The daemon would say the same again.
bool isFinal(const QString& errorName)
{
    return errorName.startsWith(u"org.freedesktop.Avahi.Invalid")
        || errorName == u"org.freedesktop.Avahi.AccessDeniedError"
        || errorName == u"org.freedesktop.Avahi.NotPermittedError";
}

} // namespace

ServicePublisher::ServicePublisher(SystemBusAccess access) : avahi_(avahiDaemon(std::move(access)))
{
    connect(avahi_.get(), &BusService::appeared, this, &ServicePublisher::askState);
    connect(avahi_.get(), &BusService::lost, this, &ServicePublisher::daemonIsLost);
    connect(avahi_.get(), &BusService::signalled, this, &ServicePublisher::hear);
}

ServicePublisher::~ServicePublisher() = default;

void ServicePublisher::publish(const QString& name, const QString& type, std::uint16_t port)
{
    isWanted_ = true;
    wantedName_ = serviceName(name);
    type_ = type;
    port_ = port;
    name_ = wantedName_;
    toldName_ = wantedName_;
    // What the daemon still has to say of the service before must not be taken for news of this.
    freeGroup();
    if (avahi_->isThere()) return askState();
    if (!avahi_->lossReason().isEmpty()) daemonIsLost(avahi_->lossReason());
    avahi_->open();
}

void ServicePublisher::withdraw()
{
    isWanted_ = false;
    freeGroup();
}

void ServicePublisher::askState()
{
    avahi_->call(
        serverMethod(*avahi_, serverInterface, "GetState"), [this](const QDBusMessage& reply) {
            if (isError(reply)) return avahi_->fail(reply.errorMessage());
            takeServerState(reply.arguments().value(0).toInt());
        });
}

void ServicePublisher::hear(const QDBusMessage& signal)
{
    if (signal.member() != stateChanged) return;
    const QVariantList arguments = signal.arguments();
    const int state = arguments.value(0).toInt();
    if (signal.interface() == serverInterface) {
        takeServerState(state);
    } else if (signal.path() == group_) {
        takeGroupState(state, arguments.value(1).toString());
    }
}

/// While the host's name changes, nothing that is announced may lead to it.
void ServicePublisher::takeServerState(int state)
{
    freeGroup();
    if (state != serverIsRunning || !isWanted_) return;
    // Whoever had the wanted name may have gone.
    name_ = wantedName_;
    makeGroup();
}

void ServicePublisher::takeGroupState(int state, const QString& error)
{
    if (state == groupIsEstablished) return established();
    if (state == groupHasFailed) return avahi_->fail(error);
    if (state != groupHasCollision) return;
    freeGroup();
    name_ = alternativeServiceName(name_);
    makeGroup();
}

void ServicePublisher::makeGroup()
{
    const int attempt = ++attempt_;
    avahi_->call(serverMethod(*avahi_, serverInterface, "EntryGroupNew"),
        [this, attempt](const QDBusMessage& reply) {
            if (isError(reply)) return avahi_->fail(reply.errorMessage());
            if (attempt != attempt_) {
                return avahi_->tell(avahi_->method(pathIn(reply), entryGroupInterface, freeMethod));
            }
            group_ = pathIn(reply);
            addService();
        });
}

void ServicePublisher::freeGroup()
{
    ++attempt_;
    if (group_.isEmpty()) return;
    avahi_->tell(avahi_->method(std::exchange(group_, {}), entryGroupInterface, freeMethod));
}

void ServicePublisher::addService()
{
    QDBusArgument noText;
    noText.beginArray(QMetaType::fromType<QByteArray>());
    noText.endArray();
    QDBusMessage add = avahi_->method(group_, entryGroupInterface, QStringLiteral("AddService"));
    add << anyInterface << anyProtocol << noFlags << name_ << type_ << defaultDomain << thisHost
        << QVariant::fromValue<ushort>(port_) << QVariant::fromValue(noText);
    avahi_->call(add, [this, attempt = attempt_](const QDBusMessage& reply) {
        if (attempt != attempt_) return;
        if (isCollision(reply)) { // with another program of this computer
            name_ = alternativeServiceName(name_);
            return addService();
        }
        if (isError(reply)) return refuse(reply);
        commit();
    });
}

void ServicePublisher::commit()
{
    const auto message = avahi_->method(group_, entryGroupInterface, QStringLiteral("Commit"));
    avahi_->call(message, [this, attempt = attempt_](const QDBusMessage& reply) {
        if (attempt == attempt_ && isError(reply)) refuse(reply);
    });
}

void ServicePublisher::refuse(const QDBusMessage& error)
{
    if (!isFinal(error.errorName())) return avahi_->fail(error.errorMessage());
    Q_EMIT told(QStringLiteral("DNS-SD cannot announce “%1”: %2").arg(name_, error.errorMessage()));
}

/// Comes more than once: the daemon registers anew when the network changes.
void ServicePublisher::established()
{
    const bool isBack = std::exchange(isLost_, false);
    if (!isBack && name_ == toldName_) return;
    toldName_ = name_;
    const QString start = isBack ? QStringLiteral("DNS-SD is back: ") : QStringLiteral("DNS-SD: ");
    const QString reason = name_ == wantedName_
        ? QString()
        : QStringLiteral("the name “%1” is taken; ").arg(wantedName_);
    Q_EMIT told(start + reason + QStringLiteral("announced as “%1”").arg(name_));
}

void ServicePublisher::daemonIsLost(const QString& reason)
{
    group_.clear();
    ++attempt_;
    if (!isWanted_ || std::exchange(isLost_, true)) return;
    Q_EMIT told(QStringLiteral("DNS-SD is not available and waited for: ") + reason);
}

ServiceBrowser::ServiceBrowser(const ServicePublisher* own, SystemBusAccess access)
    : own_(own), avahi_(avahiDaemon(std::move(access)))
{
    report_.setSingleShot(true);
    report_.setInterval(settlingTime);
    connect(&report_, &QTimer::timeout, this, &ServiceBrowser::reportNames);
    connect(avahi_.get(), &BusService::appeared, this, &ServiceBrowser::browse);
    connect(avahi_.get(), &BusService::lost, this, &ServiceBrowser::daemonIsLost);
    connect(avahi_.get(), &BusService::signalled, this, &ServiceBrowser::hear);
}

ServiceBrowser::~ServiceBrowser() = default;

void ServiceBrowser::start(const QString& type)
{
    type_ = type;
    avahi_->open();
}

/// What is found is told only after "Start", when it is known who tells it.
void ServiceBrowser::browse()
{
    QDBusMessage prepare = serverMethod(*avahi_, serverInterface2, "ServiceBrowserPrepare");
    prepare << anyInterface << anyProtocol << type_ << defaultDomain << noFlags;
    avahi_->call(prepare, [this](const QDBusMessage& reply) {
        if (isError(reply)) return avahi_->fail(reply.errorMessage());
        browser_ = pathIn(reply);
        avahi_->tell(avahi_->method(browser_, browserInterface, QStringLiteral("Start")));
    });
}

void ServiceBrowser::hear(const QDBusMessage& signal)
{
    if (signal.interface() != browserInterface || signal.path() != browser_) return;
    const QString event = signal.member();
    const QVariantList arguments = signal.arguments();
    if (event == u"ItemNew") {
        add(arguments.value(2).toString());
    } else if (event == u"ItemRemove") {
        remove(arguments.value(2).toString());
    } else if (event == u"Failure") {
        avahi_->fail(arguments.value(0).toString());
    } else { // "CacheExhausted", "AllForNow"
        isLost_ = false;
        reportNames();
    }
}

void ServiceBrowser::add(const QString& name)
{
    // By name: the flag for one's own is set only where announcing and browsing share a client,
    // and the one for this computer's not when the daemon remembers what has been withdrawn.
    if (own_ && own_->isOwn(name)) return;
    if (services_.size() == maximumKnown && !services_.contains(name)) return;
    Service& service = services_[name];
    if (service.places++ == 0) service.order = ++foundByNow_;
    if (!report_.isActive()) report_.start();
}

void ServiceBrowser::remove(const QString& name)
{
    const auto service = services_.find(name);
    if (service == services_.end() || --service->second.places > 0) return;
    services_.erase(service);
    if (!report_.isActive()) report_.start();
}

void ServiceBrowser::reportNames()
{
    report_.stop();
    const QStringList names = firstFound();
    if (names == reportedNames_) return;
    reportedNames_ = names;
    Q_EMIT namesChanged(names);
}

QStringList ServiceBrowser::firstFound() const
{
    std::vector<std::pair<std::uint64_t, QString>> inOrder;
    for (const auto& [name, service] : services_) {
        inOrder.emplace_back(service.order, name);
    }
    std::sort(inOrder.begin(), inOrder.end());
    inOrder.resize(std::min(inOrder.size(), maximumNames));
    QStringList names;
    for (const auto& [order, name] : inOrder) {
        names.append(name);
    }
    names.sort();
    return names;
}

void ServiceBrowser::daemonIsLost(const QString& reason)
{
    browser_.clear();
    services_.clear();
    reportNames();
    if (!std::exchange(isLost_, true)) Q_EMIT failed(reason);
}

} // namespace platform
