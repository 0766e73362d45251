#pragma once

#include "Physical/Forward.h"
#include "QoColl/Tags/IQorganizer.h"
#include "Reorganize/Forward.h"
#include "common/QoBaseObj.h"

#include <boost/shared_ptr.hpp>

#include <span>

/// A separating rule: a test that sends a file to one of its outputs. Each output has a number, its
/// type, and a name, by which rule files refer to it.
class QO_API CSeperateRule : public CQoBaseObj
{
public:
    enum EType : int
    {
        ArtistTracks = 1,
        AlbumTracks = 2,
        Jingle = 3
    };
    static constexpr int typesCount = 3;
    static const EType s_types[typesCount];

    static int getTypesCount() noexcept { return typesCount; }
    /// The index is not checked.
    static EType getType(int index) noexcept { return s_types[index]; }

    CString toString(bool full) const override;
    /// A new rule that belongs to the caller.
    virtual CSeperateRule* clone() const = 0;
    virtual int getOutputCount() const;
    /// -1 for an unknown name; upper and lower case differ.
    virtual int getOutputType(const CString& name) const;
    /// -1 for an index out of range.
    virtual int getOutputType(int index) const;
    /// "" for an unknown type.
    virtual CString getOutputName(int outputType) const;
    /// The output for a file that is known by its tag alone.
    virtual int getMatchingOutputType(const IQorganizer::TagInfo& tag) const = 0;
    /// The output for a file of the collection.
    virtual int getMatchingOutputType(const boost::shared_ptr<CHDFile>& file) const = 0;

    EType m_type;

protected:
    struct Output
    {
        int type;
        const char16_t* name;
    };

    /// The outputs in their order. The table must outlive the object.
    CSeperateRule(EType type, std::span<const Output> outputs) : m_type(type), m_outputs(outputs) {}

private:
    std::span<const Output> m_outputs;
};
