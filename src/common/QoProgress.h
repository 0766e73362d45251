#pragma once

#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

/// The way in which every long operation reports its progress and is cancelled. The operation calls
/// it on its own thread only. It asks isCanceled() once per item and stops when that is true.
class QO_API IQoProgress
{
public:
    /// The stages of a load, in their order.
    enum EStage : int
    {
        stageReadDb = 1,
        stageScan = 2,
        stageCheck = 3,
        stageBuild = 4,
        stageSave = 5
    };
    enum EItemKind : int
    {
        itemFilePath = 1
    };
    enum ERangeMode : int
    {
        rangeKnown = 0,  ///< total steps follow
        rangeUnknown = 2 ///< the total is 0
    };

    virtual ~IQoProgress();
    /// A stage may be announced several times, also by different operations.
    virtual void setStage(int stage) = 0;
    /// The item that is worked on, such as the path of a file; kind is an EItemKind.
    virtual void setCurrentItem(const char16_t* text, int kind) = 0;
    virtual void setSubItem(std::uintptr_t, std::uintptr_t) {}
    /// How many steps follow; mode is an ERangeMode.
    virtual void setRange(int mode, int total) = 0;
    virtual void setPosition(std::uintptr_t) {}
    /// So many items are done.
    virtual void step(int count) = 0;
    virtual void setText(std::uintptr_t) {}
    virtual bool isCanceled() = 0;
    virtual void onIdle() {}
    virtual void setTotalSize(std::uintptr_t, std::uintptr_t) {}
    virtual void setDoneSize(std::uintptr_t, std::uintptr_t) {}
};

/// Ignores all reports and is never cancelled.
class QO_API CDummyProgress : public IQoProgress
{
public:
    void setStage(int) override {}
    void setCurrentItem(const char16_t*, int) override {}
    void setRange(int, int) override {}
    void step(int) override {}
    bool isCanceled() override;
};
