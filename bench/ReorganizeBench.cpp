#include "core/runs/MoveRun.h"

#include <QoKernel/Kernel.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// bench_reorganize FOLDER [FILES]: makes files in a new folder there and lets them change between
// two places in turns: by a run with its journal, and by bare calls of renameat2 with one fsync
// each hundred. Prints the number of files, the median seconds of both and their ratio.
namespace
{
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int rounds = 7;
constexpr int stepsToAnFsync = 100;
constexpr int filesInAFolder = 100;

struct Move
{
    std::string from;
    std::string to;
};

[[noreturn]] void fail(const std::string& what)
{
    std::fprintf(stderr, "%s\n", what.c_str());
    std::exit(1);
}

std::vector<Move> makeFiles(const fs::path& base, int count)
{
    std::vector<Move> moves;
    for (int i = 0; i < count; ++i)
    {
        const std::string folder = std::to_string(i / filesInAFolder);
        const std::string name = std::to_string(i) + ".mp3";
        if (i % filesInAFolder == 0)
        {
            fs::create_directories(base / "a" / folder);
            fs::create_directories(base / "b" / folder);
        }
        moves.push_back({base / "a" / folder / name, base / "b" / folder / ("new " + name)});
        std::ofstream(moves.back().from) << name;
    }
    ::sync();
    return moves;
}

double floorOf(const std::vector<Move>& moves, const fs::path& base)
{
    const int file = ::open((base / "floor").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    const auto start = Clock::now();
    for (std::size_t i = 0; i < moves.size(); ++i)
    {
        if (i % stepsToAnFsync == 0 && (::write(file, "x", 1) != 1 || ::fsync(file) != 0))
            fail("fsync");
        if (::renameat2(
                AT_FDCWD, moves[i].from.c_str(), AT_FDCWD, moves[i].to.c_str(), RENAME_NOREPLACE) !=
            0)
            fail("renameat2");
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    ::close(file);
    return seconds;
}

double runOf(const std::vector<Move>& moves, const fs::path& base)
{
    qo::host::ReorganizePlan plan;
    plan.id = "bench";
    plan.targets = {base};
    plan.keptFolders = {base};
    for (const Move& move : moves)
    {
        qo::host::PlannedFile file;
        file.verdict = qo::host::PlannedFile::Verdict::move;
        file.from = move.from;
        file.to = move.to;
        if (qo::host::markOf(move.from, file.mark) != 0)
            fail(move.from);
        plan.files.push_back(file);
    }
    const std::string journal = base / "journal";
    const auto start = Clock::now();
    const auto report = qo::host::MoveRun::begin(journal, plan)->run({});
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (report.moved != moves.size())
        fail(report.failures.front().reason);
    fs::remove(journal);
    return seconds;
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}
} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    const fs::path base = fs::absolute(fs::path(argv[1]) / "bench-reorganize").lexically_normal();
    std::vector<Move> moves = makeFiles(base, argc > 2 ? std::atoi(argv[2]) : 10'000);
    // One file stays in each folder, so that none runs empty.
    for (int i = 0; i * filesInAFolder < static_cast<int>(moves.size()); ++i)
    {
        for (const char* side : {"a", "b"})
            std::ofstream(base / side / std::to_string(i) / "stays") << i;
    }
    std::vector<double> floors;
    std::vector<double> runs;
    for (int i = 0; i < rounds; ++i)
    {
        for (const bool isFloor : {true, false})
        {
            (isFloor ? floors : runs)
                .push_back(isFloor ? floorOf(moves, base) : runOf(moves, base));
            for (Move& move : moves)
                std::swap(move.from, move.to);
        }
    }
    fs::remove_all(base);
    std::printf("%zu %.6f %.6f %.2f\n",
                moves.size(),
                median(floors),
                median(runs),
                median(runs) / median(floors));
    return 0;
}
