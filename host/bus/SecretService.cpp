#include "bus/SecretService.h"

#include "bus/Bus.h"
#include "core/base/HostError.h"

#include <chrono>

namespace qo::host
{
namespace
{
constexpr const char* secrets = "org.freedesktop.secrets";
constexpr const char* secretsPath = "/org/freedesktop/secrets";
constexpr const char* secretsFace = "org.freedesktop.Secret.Service";
constexpr const char* collectionFace = "org.freedesktop.Secret.Collection";
constexpr const char* itemFace = "org.freedesktop.Secret.Item";
constexpr const char* promptFace = "org.freedesktop.Secret.Prompt";
constexpr std::uint64_t longestAnswer = std::chrono::microseconds(std::chrono::seconds(20)).count();
/// For typing a password into a window of the desktop's.
constexpr std::chrono::seconds longestPrompt{120};

[[noreturn]] void failLocked()
{
    throw HostError(ExitCode::failed,
                    "the desktop's store of passwords is locked: unlock it, and try again");
}

/// Runs calls; what fails in them becomes a sentence.
template <class Calls>
auto withSentence(Calls calls)
{
    try
    {
        return calls();
    }
    catch (const BusFailure& failure)
    {
        if (failure.name == "org.freedesktop.Secret.Error.IsLocked")
            failLocked();
        throw HostError(ExitCode::failed,
                        failure.isAbsent()
                            ? "the desktop's store of passwords has ended"
                            : "the desktop's store of passwords fails: " + failure.message);
    }
}

/// A call with more in it than sd_bus_call_method() can put together.
class Request
{
public:
    Request(Bus& bus, const std::string& object, const char* face, const char* method) : m_bus(bus)
    {
        BusReply::check(::sd_bus_message_new_method_call(
                            bus.get(), m_message.slot(), secrets, object.c_str(), face, method),
                        {});
        // Whoever listens at the bus as its owner is not shown what this carries.
        (void)::sd_bus_message_sensitive(m_message.message());
    }

    template <class... Values>
    void add(const char* types, Values... values)
    {
        BusReply::check(::sd_bus_message_append(m_message.message(), types, values...), {});
    }
    void add(const SecretService::Attributes& attributes)
    {
        open('a', "{ss}");
        for (const auto& [name, value] : attributes)
            add("{ss}", name.c_str(), value.c_str());
        close();
    }
    void addBytes(std::string_view bytes)
    {
        BusReply::check(
            ::sd_bus_message_append_array(m_message.message(), 'y', bytes.data(), bytes.size()),
            {});
    }
    void open(char type, const char* contents)
    {
        BusReply::check(::sd_bus_message_open_container(m_message.message(), type, contents), {});
    }
    void close() { BusReply::check(::sd_bus_message_close_container(m_message.message()), {}); }
    BusReply send()
    {
        BusReply reply;
        BusReply::Error error;
        BusReply::check(
            ::sd_bus_call(m_bus.get(), m_message.message(), 0, &error.error, reply.slot()), error);
        return reply;
    }

private:
    Bus& m_bus;
    BusReply m_message;
};

int takeCompleted(sd_bus_message* message, void* data, sd_bus_error*)
{
    int dismissed = 1;
    if (::sd_bus_message_read(message, "b", &dismissed) < 0)
        dismissed = 1;
    *static_cast<int*>(data) = dismissed;
    return 0;
}

/// A window that nobody waits for any more would stay open.
void closePrompt(Bus& bus, const std::string& prompt)
{
    try
    {
        bus.call(secrets, prompt, promptFace, "Dismiss", "");
    }
    catch (const BusFailure&)
    {
        // It has closed by itself, or its program has ended.
    }
}

/// sd-bus speaks it, which the host has for UDisks2 already, and it takes six calls. libsecret
/// would bring glib with a thread of its own, and would not say whether a password is locked or
/// missing. Passwords go over the bus as they are: it is a socket of this user's alone.
class BusSecrets final : public SecretService
{
public:
    /// Throws BusFailure.
    explicit BusSecrets(std::function<bool()> isCanceled);

    Secret find(const Attributes& attributes) override;
    void
    store(const std::string& label, const Attributes& attributes, const Secret& secret) override;
    void remove(const Attributes& attributes) override;

private:
    /// Where the items are; the locked ones are unlocked.
    std::vector<std::string> search(const Attributes& attributes);
    void unlock(const std::string& object);
    std::string defaultCollection();
    /// Has the desktop ask what it needs to know, and waits for the user. "/" is nothing to ask.
    void settle(const std::string& prompt);
    /// Waits for the answer while it is -1. Throws HostError when the user interrupts that.
    void await(const int& answer);

    const std::function<bool()> m_isCanceled;
    Bus m_bus;
    std::string m_session;
};

BusSecrets::BusSecrets(std::function<bool()> isCanceled)
    : m_isCanceled(std::move(isCanceled)), m_bus(Bus::Kind::session, longestAnswer)
{
    // This starts the service where it does not run yet.
    BusReply reply =
        m_bus.call(secrets, secretsPath, secretsFace, "OpenSession", "sv", "plain", "s", "");
    reply.enter('v', "s");
    const char* none = nullptr;
    reply.read("s", &none);
    reply.leave();
    m_session = reply.object();
}

void BusSecrets::await(const int& answer)
{
    const auto end = std::chrono::steady_clock::now() + longestPrompt;
    constexpr std::uint64_t pause = 100'000; // microseconds
    while (answer < 0 && std::chrono::steady_clock::now() < end)
    {
        if (m_isCanceled && m_isCanceled())
            throw HostError(ExitCode::interrupted,
                            "interrupted while the desktop asked for the password of its store");
        const int result = ::sd_bus_process(m_bus.get(), nullptr);
        BusReply::check(result, {});
        if (result == 0)
            BusReply::check(::sd_bus_wait(m_bus.get(), pause), {});
    }
}

void BusSecrets::settle(const std::string& prompt)
{
    if (prompt == "/")
        return;
    int dismissed = -1; // not known yet
    sd_bus_slot* slot = nullptr;
    BusReply::check(::sd_bus_match_signal(m_bus.get(),
                                          &slot,
                                          secrets,
                                          prompt.c_str(),
                                          promptFace,
                                          "Completed",
                                          takeCompleted,
                                          &dismissed),
                    {});
    const std::unique_ptr<sd_bus_slot, decltype(&::sd_bus_slot_unref)> match(slot,
                                                                             &::sd_bus_slot_unref);
    m_bus.call(secrets, prompt, promptFace, "Prompt", "s", "");
    try
    {
        await(dismissed);
    }
    catch (const HostError&)
    {
        closePrompt(m_bus, prompt);
        throw;
    }
    if (dismissed < 0)
        closePrompt(m_bus, prompt);
    if (dismissed != 0)
        failLocked();
}

void BusSecrets::unlock(const std::string& object)
{
    BusReply reply = m_bus.call(
        secrets, secretsPath, secretsFace, "Unlock", "ao", std::uint32_t{1}, object.c_str());
    reply.enter('a', "o");
    while (reply.nextObject())
    {
    }
    reply.leave();
    settle(reply.object());
}

std::vector<std::string> BusSecrets::search(const Attributes& attributes)
{
    Request request(m_bus, secretsPath, secretsFace, "SearchItems");
    request.add(attributes);
    BusReply reply = request.send();
    std::vector<std::string> found;
    for (const bool areLocked : {false, true})
    {
        reply.enter('a', "o");
        while (const char* const item = reply.nextObject())
        {
            found.emplace_back(item);
            if (areLocked)
                unlock(found.back());
        }
        reply.leave();
    }
    return found;
}

Secret BusSecrets::find(const Attributes& attributes)
{
    return withSentence(
        [&]
        {
            const std::vector<std::string> items = search(attributes);
            if (items.empty())
                return Secret();
            BusReply reply =
                m_bus.call(secrets, items[0], itemFace, "GetSecret", "o", m_session.c_str());
            (void)::sd_bus_message_sensitive(reply.message());
            reply.enter('r', "oayays");
            reply.object(); // the session
            const void* bytes = nullptr;
            std::size_t size = 0;
            for (int i = 0; i < 2; ++i) // the parameters, of which there are none, and the secret
                BusReply::check(::sd_bus_message_read_array(reply.message(), 'y', &bytes, &size),
                                {});
            return Secret(std::string_view(static_cast<const char*>(bytes), size));
        });
}

std::string BusSecrets::defaultCollection()
{
    BusReply reply = m_bus.call(secrets, secretsPath, secretsFace, "ReadAlias", "s", "default");
    const std::string collection = reply.object();
    if (collection == "/")
        throw HostError(ExitCode::failed,
                        "the desktop's store of passwords has no keyring to put one into");
    if (m_bus.flag(secrets, collection, collectionFace, "Locked"))
        unlock(collection);
    return collection;
}

void BusSecrets::store(const std::string& label, const Attributes& attributes, const Secret& secret)
{
    withSentence(
        [&]
        {
            Request request(m_bus, defaultCollection(), collectionFace, "CreateItem");
            request.open('a', "{sv}");
            request.add("{sv}", "org.freedesktop.Secret.Item.Label", "s", label.c_str());
            request.open('e', "sv");
            request.add("s", "org.freedesktop.Secret.Item.Attributes");
            request.open('v', "a{ss}");
            request.add(attributes);
            request.close();
            request.close();
            request.close();
            request.open('r', "oayays");
            request.add("o", m_session.c_str());
            request.addBytes({});
            request.addBytes(secret.view());
            request.add("s", "text/plain; charset=utf8");
            request.close();
            request.add("b", 1);
            BusReply reply = request.send();
            const char* item = nullptr;
            const char* prompt = nullptr;
            reply.read("oo", &item, &prompt);
            settle(prompt);
        });
}

void BusSecrets::remove(const Attributes& attributes)
{
    withSentence(
        [&]
        {
            for (const std::string& item : search(attributes))
            {
                BusReply reply = m_bus.call(secrets, item, itemFace, "Delete", "");
                settle(reply.object());
            }
        });
}
} // namespace

std::unique_ptr<SecretService> openSecretService(std::function<bool()> isCanceled)
{
    try
    {
        return std::make_unique<BusSecrets>(std::move(isCanceled));
    }
    catch (const BusFailure&)
    {
        return nullptr; // a service that cannot be started is none
    }
}
} // namespace qo::host
