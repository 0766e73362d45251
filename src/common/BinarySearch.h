#pragma once

namespace qo
{
/// The binary search of all sorted lists, over the half-open range from low to high: short ranges
/// are scanned from low, longer ones halved. order(index) is negative where the key belongs before
/// that element, 0 where it equals it. False when nothing equal is found; index is then where the
/// key belongs.
///
/// Which elements are compared, and in which order, is part of the contract, since comparisons need
/// not be transitive. Example: a missing year equals every year.
///
///   in {1990, "", 2000} the search for 1995 asks 1990 (larger), then "" (equal): found, index 1
///   in {1990, 2000, ""} it asks 1990 (larger), then 2000 (smaller): not found, index 1
///
/// So std::lower_bound or another way of halving would give other collections.
template <class ORDER>
bool searchBinary(int low, int high, ORDER order, int& index)
{
    constexpr int scanBelow = 9;
    while (high - low >= scanBelow)
    {
        const int middle = low + (high - low) / 2;
        const int result = order(middle);
        if (result == 0)
        {
            index = middle;
            return true;
        }
        (result < 0 ? high : low) = result < 0 ? middle : middle + 1;
    }
    int result = 1;
    for (index = low; index < high; ++index)
    {
        result = order(index);
        if (result <= 0)
            break;
    }
    return index < high && result == 0;
}
} // namespace qo
