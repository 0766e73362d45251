#include "Reorganize/JingleSeperateRule.h"

#include "Analyze/MakeOwned.h"
#include "Physical/HDFile.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/VelmoraFileParamsUtils.h"

const CSeperateRule::Output CJingleSeperateRule::s_outputs[] = {{NotJingle, u"NotJingle"},
                                                                {IsJingle, u"Jingle"}};

CJingleSeperateRule::CJingleSeperateRule() : CSeperateRule(Jingle, s_outputs) {}

CSeperateRule* CJingleSeperateRule::clone() const
{
    const auto here = QO_HERE(u".\\Reorganize\\JingleSeperateRule");
    return qo::makeOwned<CJingleSeperateRule>(here).release();
}

int CJingleSeperateRule::getMatchingOutputType(const IQorganizer::TagInfo& tag) const
{
    return tag.isJingle ? IsJingle : NotJingle;
}

int CJingleSeperateRule::getMatchingOutputType(const boost::shared_ptr<CHDFile>& file) const
{
    // A record without parameters is not a jingle.
    QorganizerDef::VelmoraFileParams params;
    const bool isKnown = CVelmoraFileParamsUtils::FromDbParam(file->getDbItem()->params, params);
    return isKnown && params.isJingle ? IsJingle : NotJingle;
}
