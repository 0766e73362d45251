#include "KVTagLib/WriteStop.h"

#include <utility>

namespace KVTagLib
{
namespace
{
thread_local const WriteStop* youngest = nullptr;
}

WriteStop::WriteStop(std::function<bool()> stop) : m_stop(std::move(stop)), m_outer(youngest)
{
    youngest = this;
}

WriteStop::~WriteStop()
{
    youngest = m_outer;
}

bool WriteStop::isAsked()
{
    return youngest && youngest->m_stop();
}
} // namespace KVTagLib
