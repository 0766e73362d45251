#pragma once

#include "Logical/RareLink.h"
#include "common/Log.h"

#include <boost/shared_ptr.hpp>

namespace qo
{
/// Used by every setter of a single link: a link that is set may be cleared with null, but not
/// changed to another object. An attempt is logged as an error and changes nothing.
template <class X>
void setLTMember(boost::shared_ptr<X>& member, const boost::shared_ptr<X>& value)
{
    if (value && member && value != member)
    {
        log(level::error,
            u"setLTMember assertion failed: pMember=%p, pValue=%p",
            static_cast<const void*>(member.get()),
            static_cast<const void*>(value.get()));
        return;
    }
    member = value;
}

template <class X>
void setLTMember(RareLink<X>& link, const boost::shared_ptr<X>& value)
{
    boost::shared_ptr<X> member = link.get();
    setLTMember(member, value);
    if (member != link.get())
        link.set(member);
}
} // namespace qo
