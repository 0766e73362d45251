#include "Logical/UnusedNotes.h"

qo::UnusedNotes& qo::UnusedNotes::instance() noexcept
{
    static UnusedNotes notes;
    return notes;
}
