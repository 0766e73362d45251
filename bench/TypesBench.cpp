#include "types/Array.h"
#include "types/CharClass.h"
#include "types/String.h"
#include "types/Utf.h"

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <random>
#include <vector>

namespace
{
using Handle = boost::shared_ptr<int>;

/// Handles of objects of their own, put in at random places: chunks and objects lie in memory as
/// they do in a live collection.
const CArray<Handle>& scattered(int size)
{
    static CArray<Handle> array;
    if (array.GetSize() != size)
    {
        array.RemoveAll();
        std::mt19937 random(1);
        for (int i = 0; i < size; ++i)
            array.InsertAt(static_cast<int>(random() % (static_cast<unsigned>(i) + 1)),
                           boost::make_shared<int>(i));
    }
    return array;
}

std::vector<int> places(int size)
{
    std::mt19937 random(2);
    std::vector<int> result(100000);
    for (int& place : result)
        place = static_cast<int>(random() % static_cast<unsigned>(size));
    return result;
}

template <class List>
long sum(const List& list)
{
    long total = 0;
    for (const Handle& handle : list)
        total += *handle;
    return total;
}

void insertAtRandomPlaces(benchmark::State& state)
{
    const int size = static_cast<int>(state.range(0));
    const Handle one = boost::make_shared<int>(1);
    for (auto _ : state)
    {
        std::mt19937 random(1);
        CArray<Handle> array;
        for (int i = 0; i < size; ++i)
            array.InsertAt(static_cast<int>(random() % (static_cast<unsigned>(i) + 1)), one);
        benchmark::DoNotOptimize(array.GetSize());
    }
}

void readInOrder(benchmark::State& state)
{
    const CArray<Handle>& array = scattered(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(sum(array));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void readInOrderFlat(benchmark::State& state)
{
    const CArray<Handle>& array = scattered(static_cast<int>(state.range(0)));
    const std::vector<Handle> flat(array.begin(), array.end());
    for (auto _ : state)
        benchmark::DoNotOptimize(sum(flat));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void readByIndexInOrder(benchmark::State& state)
{
    const CArray<Handle>& array = scattered(static_cast<int>(state.range(0)));
    for (auto _ : state)
    {
        long total = 0;
        for (int i = 0; i < array.GetSize(); ++i)
            total += *array[i];
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void readAtRandomPlaces(benchmark::State& state)
{
    const CArray<Handle>& array = scattered(static_cast<int>(state.range(0)));
    const std::vector<int> where = places(array.GetSize());
    for (auto _ : state)
    {
        for (const int place : where)
            benchmark::DoNotOptimize(array[place].get());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(where.size()));
}

void removeFromTheFront(benchmark::State& state)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        CArray<Handle> array(scattered(static_cast<int>(state.range(0))));
        state.ResumeTiming();
        while (!array.IsEmpty())
            array.RemoveAt(0);
    }
}

void comparePaths(benchmark::State& state)
{
    const CString folder(
        u"C:\\home\\ann\\Music\\Some Long Artist Name\\1999 - An Album With a Long Name\\");
    const CString a = folder + u"01 First.mp3";
    const CString b = folder + u"02 second.mp3";
    for (auto _ : state)
        benchmark::DoNotOptimize(qo::compareNoCase(a.view(), b.view()));
}

void copyText(benchmark::State& state)
{
    const CString text(u"An artist's name");
    for (auto _ : state)
    {
        CString copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

void formatLine(benchmark::State& state)
{
    const CString name(u"C:\\home\\ann\\Music\\a.mp3");
    for (auto _ : state)
    {
        CString line;
        line.Format(u"%02d:%02d:%02d.%03d %X %s: %s", 12, 34, 56, 789, 0xABCDU, u"INF", name);
        benchmark::DoNotOptimize(line);
    }
}

void fromUtf8AndBack(benchmark::State& state)
{
    const std::string text = "/home/ann/Musik/Björk/Début/01 Human Behaviour.mp3";
    for (auto _ : state)
        benchmark::DoNotOptimize(qo::toUtf8(qo::fromUtf8(text)));
}

constexpr int many = 1000000;
BENCHMARK(insertAtRandomPlaces)->Arg(many)->Unit(benchmark::kMillisecond);
BENCHMARK(readInOrderFlat)->Arg(12)->Arg(100000)->Arg(many);
BENCHMARK(readInOrder)->Arg(12)->Arg(100000)->Arg(many);
BENCHMARK(readByIndexInOrder)->Arg(12)->Arg(100000)->Arg(many);
BENCHMARK(readAtRandomPlaces)->Arg(many);
BENCHMARK(removeFromTheFront)->Arg(many)->Unit(benchmark::kMillisecond);
BENCHMARK(comparePaths);
BENCHMARK(copyText);
BENCHMARK(formatLine);
BENCHMARK(fromUtf8AndBack);
} // namespace

BENCHMARK_MAIN();
