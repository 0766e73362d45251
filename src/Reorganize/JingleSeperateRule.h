#pragma once

#include "Reorganize/SeperateRule.h"

/// Separates the jingles of radio recordings from all other files.
class QO_API CJingleSeperateRule final : public CSeperateRule
{
public:
    enum EOutputType : int
    {
        NotJingle = 0,
        IsJingle = 1
    };

    CJingleSeperateRule();

    CSeperateRule* clone() const override;
    int getMatchingOutputType(const IQorganizer::TagInfo& tag) const override;
    /// By the parameters in the file's record.
    int getMatchingOutputType(const boost::shared_ptr<CHDFile>& file) const override;

private:
    static const Output s_outputs[];
};
