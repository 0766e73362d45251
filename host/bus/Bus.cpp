#include "bus/Bus.h"

#include <cstring>

namespace qo::host
{
bool BusFailure::isAbsent() const
{
    return name.empty() || name == SD_BUS_ERROR_SERVICE_UNKNOWN ||
           name == SD_BUS_ERROR_NAME_HAS_NO_OWNER;
}

void BusReply::check(int result, const Error& error)
{
    if (result >= 0)
        return;
    const sd_bus_error& cause = error.error;
    throw BusFailure{cause.name ? cause.name : "",
                     cause.message ? cause.message : std::strerror(-result)}; // NOLINT
}

void BusReply::enter(char type, const char* contents)
{
    check(::sd_bus_message_enter_container(m_message, type, contents), {});
}

const char* BusReply::object()
{
    const char* object = nullptr;
    read("o", &object);
    return object;
}

const char* BusReply::nextObject()
{
    const char* object = nullptr;
    const int result = ::sd_bus_message_read(m_message, "o", &object);
    check(result, {});
    return result > 0 ? object : nullptr;
}

Bus::Bus(Kind kind, std::uint64_t longest)
{
    BusReply::check(
        kind == Kind::system ? ::sd_bus_open_system(&m_bus) : ::sd_bus_open_user(&m_bus), {});
    ::sd_bus_set_method_call_timeout(m_bus, longest);
    ::sd_bus_set_allow_interactive_authorization(m_bus, 1);
}

std::string
Bus::object(const char* service, const std::string& object, const char* face, const char* property)
{
    BusReply reply;
    BusReply::Error error;
    BusReply::check(
        ::sd_bus_get_property(
            m_bus, service, object.c_str(), face, property, &error.error, reply.slot(), "o"),
        error);
    return reply.object();
}

bool Bus::flag(const char* service,
               const std::string& object,
               const char* face,
               const char* property)
{
    int value = 0;
    BusReply::Error error;
    BusReply::check(::sd_bus_get_property_trivial(
                        m_bus, service, object.c_str(), face, property, &error.error, 'b', &value),
                    error);
    return value != 0;
}
} // namespace qo::host
