#pragma once

#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

/// A home folder of a person with a small library, in which lines of bash run as that person types
/// them: "qo" is the command, with its data below the home folder.
class SampleHome
{
public:
    struct Result
    {
        int code = -1;
        std::string out;
        std::string err;
    };

    SampleHome()
    {
        dir.makeFolder("home/ann");
        dir.write("bin/qo", "#!/bin/sh\nexec '" QO_COMMAND "' \"$@\"\n");
        EXPECT_EQ(::chmod(dir.path("bin/qo").c_str(), 0755), 0);
        const Result made = run(R"(
            set -e
            mkdir -p Downloads Pictures .zfunc .config/fish/completions Music/Kino/Album
            mkdir -p "Music/Hidden Machine/Stranger" "Music/Iron Circus/Heart"
            sounds=)" QO_TEST_DATA R"(/sounds
            track() {
                cp $sounds/sound.mp3 "$1"
                qo -q tag set "$@" >/dev/null
                qo -q tag write "$1"
            }
            cd Music
            machine="artist=Hidden Machine"
            track "Hidden Machine/Stranger/01 - Letter.mp3" "$machine" album=Stranger \
                title=Letter track=1/4 year=1989 genre=Rock "lyrics=Dear friend"
            track "Hidden Machine/Stranger/02 - Rain.mp3" "$machine" album=Stranger \
                title=Rain track=2/4 year=1989 genre=Rock
            track "Hidden Machine/Stranger/03 - Winter.mp3" "$machine" album=Stranger \
                title=Winter track=3/4 year=1989 genre=Rock
            track "Hidden Machine/Stranger/04 - Tonight.mp3" "$machine" album=Stranger \
                title=Tonight track=4/4 year=1989 genre=Rock
            track "Iron Circus/Heart/01 - Heart.mp3" "artist=Iron Circus" album=Heart \
                title=Heart track=1 year=2014 genre=Jazz
            track Kino/Album/01.mp3 artist=Kino "album=Ãðóïïà êðîâè" "title=Çâåçäà ïî èìåíè Ñîëíöå"
            cd ..
            cp $sounds/sound.mp3 Downloads/new.mp3
            printf '\xff\xd8\xff\xe0\0\20JFIF\0\1\1\0\0\1\0\1\0\0\xff\xd9' > Pictures/front.jpg
            cp Pictures/front.jpg "Music/Hidden Machine/Stranger/cover.jpg"
            echo "My heart" > "Music/Iron Circus/Heart/01 - Heart.txt"
            echo "<broken>" > Downloads/broken.xml)");
        EXPECT_EQ(made.code, 0) << made.err;
    }

    /// What becomes of a script in the home folder. Paths below it are shown as of /home/ann.
    Result run(const std::string& script) const
    {
        dir.write("script", script);
        const std::string call = "cd '" + dir.path("home/ann") + "' && env -i HOME='" +
                                 dir.path("home/ann") + "' PATH='" + dir.path("bin") +
                                 "':\"$PATH\" LC_ALL=C.UTF-8 TZ=UTC TERM=dumb bash '" +
                                 dir.path("script") + "' >'" + dir.path("out") + "' 2>'" +
                                 dir.path("err") + "' </dev/null";
        const int status = std::system(call.c_str()); // NOLINT(concurrency-mt-unsafe)
        Result result;
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        result.out = shown(dir.read("out"));
        result.err = shown(dir.read("err"));
        return result;
    }
    std::string run0(const std::string& script) const
    {
        const Result result = run(script);
        EXPECT_EQ(result.code, 0) << script << "\n" << result.err;
        return result.out;
    }

    /// Sets the home folder aside, and puts it back as it was.
    void keep() const { run0("cp -a . '" + dir.path("kept") + "'"); }
    void goBack() const
    {
        const std::string home = dir.path("home/ann");
        run0("cd /; rm -rf '" + home + "'; cp -a '" + dir.path("kept") + "' '" + home + "'");
    }

    /// What a person sees: paths of the home folder are those of /home/ann.
    std::string shown(std::string text) const
    {
        const std::string folder = dir.path();
        for (std::size_t at = 0; (at = text.find(folder, at)) != std::string::npos;)
            text.erase(at, folder.size());
        return text;
    }

    TempDir dir;
};
