#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>

namespace qo::host
{
/// A call over the bus that failed.
struct BusFailure
{
    std::string name; ///< of the error on the bus; "" where the bus itself cannot be used
    std::string message;

    /// Whether there is no such bus, or no such service on it.
    bool isAbsent() const;
};

/// The answer to a call, which the reading functions of sd-bus take.
class BusReply
{
public:
    BusReply() = default;
    ~BusReply() { ::sd_bus_message_unref(m_message); }
    BusReply(BusReply&& other) noexcept : m_message(other.m_message) { other.m_message = nullptr; }
    BusReply& operator=(BusReply&&) = delete;

    /// Throws BusFailure when the answer is another one than was expected.
    template <class... Values>
    void read(const char* types, Values*... values)
    {
        check(::sd_bus_message_read(m_message, types, values...), {});
    }
    /// The path of an object; valid as long as the answer.
    const char* object();
    /// The next of a list of objects that enter() has opened; null at its end.
    const char* nextObject();
    /// Opens a container.
    void enter(char type, const char* contents);
    void leave() { check(::sd_bus_message_exit_container(m_message), {}); }
    sd_bus_message* message() { return m_message; }
    sd_bus_message** slot() { return &m_message; }

    struct Error
    {
        Error() = default;
        ~Error() { ::sd_bus_error_free(&error); }
        Error(const Error&) = delete;
        Error& operator=(const Error&) = delete;
        sd_bus_error error{};
    };
    /// Throws BusFailure for the result of a function that has failed.
    static void check(int result, const Error& error);

private:
    sd_bus_message* m_message = nullptr;
};

/// A connection to a bus. Its calls throw BusFailure. For one thread.
class Bus
{
public:
    enum class Kind
    {
        system,
        session
    };

    /// longest: how long a call may take, in microseconds.
    Bus(Kind kind, std::uint64_t longest);
    ~Bus() { ::sd_bus_flush_close_unref(m_bus); }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// types and arguments are those of sd_bus_message_append().
    template <class... Arguments>
    BusReply call(const char* service,
                  const std::string& object,
                  const char* face,
                  const char* method,
                  const char* types,
                  Arguments... arguments)
    {
        BusReply reply;
        BusReply::Error error;
        BusReply::check(::sd_bus_call_method(m_bus,
                                             service,
                                             object.c_str(),
                                             face,
                                             method,
                                             &error.error,
                                             reply.slot(),
                                             types,
                                             arguments...),
                        error);
        return reply;
    }
    bool
    flag(const char* service, const std::string& object, const char* face, const char* property);
    /// A property that is the path of an object.
    std::string
    object(const char* service, const std::string& object, const char* face, const char* property);
    sd_bus* get() { return m_bus; }

private:
    sd_bus* m_bus = nullptr;
};
} // namespace qo::host
