#pragma once

namespace qo
{
/// The binary search of all sorted lists over the half-open range from low to high: short ranges
/// are scanned from low, longer ones halved. order(index) is negative where the key belongs ahead
/// of that element, 0 where it equals it. Which elements are asked, and in which order, is part of
/// the contract: with comparisons that are not transitive it decides the result. On failure index
/// is where the key belongs.
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
