#pragma once

#include "core/load/CollectionLoader.h"
#include "core/roots/RootFolders.h"
#include "core/runs/FileMoves.h"
#include "core/runs/Reorganizer.h"
#include "core/session/Session.h"
#include "host/core/MessageOf.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <QoKernel/Physical.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>

/// A real collection of a folder of its own: "music" is its root folder, "data" the data folder.
class LoadedCollection
{
public:
    LoadedCollection()
    {
        dir.makeFolder("music");
        qo::host::Session::Options options;
        options.dataFolder = dir.path("data");
        options.note = [this](const std::string& sentence) { notes += sentence + "\n"; };
        session = std::make_unique<qo::host::Session>(options);
        addRoot(dir.collPath("music"));
    }

    template <class Function>
    auto run(Function function) const
    {
        return session->kernel().run(function);
    }
    void addRoot(const CString& folder) const
    {
        run(
            [&]
            {
                qo::host::RootFolders roots;
                roots.add(folder, CQoPathInfo::audioIsMusic);
                roots.store();
            });
    }
    /// Puts a sound of tests/data there, for each its own; its path in collection form.
    CString addSound(const std::string& relative, const std::string& sound = "sound.mp3") const
    {
        const std::filesystem::path target = dir.path(relative);
        std::filesystem::create_directories(target.parent_path());
        std::filesystem::copy_file(std::string(QO_TEST_DATA "/sounds/") + sound, target);
        return dir.collPath(relative);
    }
    void load(bool rescan = true) const
    {
        run(
            [&]
            {
                session->prepareDatabase(qo::host::Session::databasePath());
                qo::host::LoadOptions options;
                options.rescan = rescan;
                qo::host::loadCollection(*session, options, *progress);
            });
    }

    qo::host::Trash trash() const { return qo::host::Trash(dir.path("home/Trash")); }
    /// One run of what ask asks of it; throws the first failure.
    template <class Ask>
    void carryOut(const char* kind, Ask ask) const
    {
        run(
            [&]
            {
                qo::host::FileMoves moves(*session, kind, trash(), {});
                ask(moves);
                const qo::host::MoveRun::Report report =
                    qo::host::Reorganizer(*session, trash()).carryOut(moves, *progress);
                if (!report.failures.empty())
                    throw qo::host::HostError(qo::host::ExitCode::failed,
                                              report.failures[0].from + ": " +
                                                  report.failures[0].reason);
            });
    }

    /// The id of each record by its path below the test's folder, as the collection has them.
    std::map<std::string, std::string> records() const
    {
        return run(
            [this]
            {
                QoFileDbItemArray items;
                CQoCollection::m_ownCollection.copyFiles(items);
                for (const QoFileDbItemPtr& item : items)
                    EXPECT_TRUE(CQoCollection::m_ownCollection.getFileByPath(item->path))
                        << qo::toUtf8(item->path) << " has a record but is not in the tree";
                return named(items);
            });
    }
    /// The same as the database has them.
    std::map<std::string, std::string> stored() const
    {
        return run(
            [this]
            {
                QoFileDbItemArray items;
                CQoCollDb(qo::host::Session::databasePath()).getAllFiles(items, false, u"", true);
                return named(items);
            });
    }
    /// That collection and database have these, no more and no less.
    void expectRecords(const std::map<std::string, std::string>& expected) const
    {
        EXPECT_EQ(records(), expected);
        EXPECT_EQ(stored(), expected);
    }
    /// Runs it, expects it to fail and gives the sentence.
    template <class Function>
    std::string messageOf(Function function, qo::host::ExitCode code) const
    {
        return ::messageOf([&] { run(function); }, code);
    }
    /// The same records with one of them under another path.
    static std::map<std::string, std::string>
    renamed(std::map<std::string, std::string> list, const std::string& from, const std::string& to)
    {
        auto node = list.extract(from);
        node.key() = to;
        list.insert(std::move(node));
        return list;
    }
    /// Another, older file in the place of this one; its size.
    std::int64_t replaceByOlder(const std::string& relative) const
    {
        namespace fs = std::filesystem;
        const std::string file = dir.path(relative);
        fs::copy_file(
            QO_TEST_DATA "/sounds/sound.flac", file, fs::copy_options::overwrite_existing);
        fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(9999));
        return static_cast<std::int64_t>(fs::file_size(file));
    }
    /// What the collection takes for the size of a file.
    std::int64_t sizeOf(const CString& path) const
    {
        return run(
            [&] { return CQoCollection::m_ownCollection.getFileByPath(path)->getDbItem()->size; });
    }

    TempDir dir;
    mutable std::string notes; ///< what the session had to say
    std::unique_ptr<qo::host::Session> session;
    std::unique_ptr<qo::host::ProgressReporter> progress =
        std::make_unique<qo::host::ProgressReporter>([](const qo::host::ProgressEvent&) {});

private:
    std::map<std::string, std::string> named(const QoFileDbItemArray& items) const
    {
        std::map<std::string, std::string> list;
        for (const QoFileDbItemPtr& item : items)
        {
            const std::string path = qo::toSystemPath(item->path);
            const bool isBelow = path.starts_with(dir.path() + "/");
            list[isBelow ? path.substr(dir.path().size() + 1) : path] = qo::toUtf8(item->velmoraId);
        }
        return list;
    }
};
