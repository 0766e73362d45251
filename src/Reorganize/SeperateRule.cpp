#include "Reorganize/SeperateRule.h"

// Outputs are found in the table of the derived class, which has two or three rows.

const CSeperateRule::EType CSeperateRule::s_types[typesCount] = {ArtistTracks, AlbumTracks, Jingle};

CString CSeperateRule::toString(bool /*full*/) const
{
    return {};
}

int CSeperateRule::getOutputCount() const
{
    return static_cast<int>(m_outputs.size());
}

int CSeperateRule::getOutputType(const CString& name) const
{
    for (const Output& output : m_outputs)
    {
        if (name == output.name)
            return output.type;
    }
    return -1;
}

int CSeperateRule::getOutputType(int index) const
{
    const bool isInRange = index >= 0 && index < getOutputCount();
    return isInRange ? m_outputs[static_cast<std::size_t>(index)].type : -1;
}

CString CSeperateRule::getOutputName(int outputType) const
{
    for (const Output& output : m_outputs)
    {
        if (output.type == outputType)
            return output.name;
    }
    return {};
}
