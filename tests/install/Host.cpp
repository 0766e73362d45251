// A host of every public family, which knows nothing but <QoKernel/...>. Says one line for each.
#include <QoKernel/Analysis.h>
#include <QoKernel/Collection.h>
#include <QoKernel/Kernel.h>
#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>
#include <QoKernel/Rules.h>
#include <QoKernel/Tags.h>

#include <boost/make_shared.hpp>

#include <cstdio>
#include <deque>
#include <memory>

class KVConfig::Section
{
};
class KVConfig::Key
{
public:
    CString value;
};

namespace
{
/// Settings that last as long as the program.
class MemoryConfig : public KVConfig
{
public:
    Section* addSection(int, const char16_t*) override { return &m_section; }
    Key* addKey(Section*, const char16_t*, const char16_t* value) override
    {
        return &m_keys.emplace_back(Key{value});
    }
    CString getValue(const Key* key) const override { return key->value; }
    void setValue(Key* key, const CString& value) override { key->value = value; }

private:
    Section m_section;
    std::deque<Key> m_keys;
};

template <class... Args>
void say(const char16_t* format, const Args&... args)
{
    CString text;
    text.Format(format, args...);
    std::printf("%s\n", qo::toUtf8(text).c_str());
}

int byName(const boost::shared_ptr<CHDFile>& a, const boost::shared_ptr<CHDFile>& b)
{
    return a->getPath().CompareNoCase(b->getPath());
}

template <class Item>
boost::shared_ptr<Item> made(const char16_t* path)
{
    const boost::shared_ptr<Item> item = boost::make_shared<Item>();
    item->path = path;
    item->title = u"Title";
    return item;
}

void kernel(const CString& folder)
{
    InitSimpleLogger(0, folder + u"\\log");
    CStdioFileEx file;
    file.Open(folder + u"\\greeting.txt", CStdioFileEx::modeWrite | CStdioFileEx::modeCreate);
    file.WriteString(u"Grüße");
    file.Close();
    file.Open(folder + u"\\greeting.txt", CStdioFileEx::modeRead);
    CString line;
    file.ReadString(line);
    CAutoListT<CString> owned;
    owned.add(std::make_unique<CString>(line).release());
    say(u"%s from the kernel, %d", *owned[0], owned.GetSize());
}

void tags(const CString& folder)
{
    using namespace KVTagLib;
    const CString path = folder + u"\\absent.mp3";
    const std::unique_ptr<ITagsReader> reader(CTagsReaderFactory::CreateTagsReader(path));
    const std::unique_ptr<ITagsWriter> writer(CTagsWriterFactory::CreateTagsWriter(path));
    CTags tag;
    const bool isRead = reader->Read(tag, 0, 0);
    tag.SetTitle(u"Title");
    const bool isWritten = writer->Write(tag);
    say(u"tags: %d %d", static_cast<int>(isRead), static_cast<int>(isWritten));
}

void streams(CQoCollDb& db)
{
    AudioCutterCore::ACTrackStorage place;
    place.endPosition = 8;
    AcStreamDbItem stream;
    stream.velmoraId = u"stream";
    AcStreamTrackDbItem track;
    track.streamVelmoraId = u"stream";
    track.trackVelmoraId = u"track";
    track.params = CAcParamsUtils::toString(place);
    AcStreamArray streams;
    streams.Add(stream);
    AcStreamTrackArray tracks;
    tracks.Add(track);
    db.saveACStreamData(streams, tracks);
    db.getACStreamData(streams, tracks);
    AudioCutterCore::ACTrackStorage readPlace;
    CAcParamsUtils::fromString(tracks[0].params, readPlace);
    say(u"streams: %d, to %d", streams.GetSize(), static_cast<int>(readPlace.endPosition));
}

void records(const CString& folder)
{
    const CString path = folder + u"\\collection.db";
    CQoCollDb::CreateDatabaseIfNotValid(path, {});
    CQoCollDb db(path);
    CSQLiteDbTransaction* transaction =
        db.beginTransaction(eSQLiteTransactionType::immediate, eSQLiteEndTransaction::rollback);
    QoFileDbItemPtr file = made<QoFileDbItem>(u"C:\\a.mp3");
    file->velmoraId = u"id";
    db.insertFile(file, CString());
    boost::shared_ptr<QoSessionDbItem> session = boost::make_shared<QoSessionDbItem>();
    db.insertSession(session);
    boost::shared_ptr<QoShareDbItem> share = boost::make_shared<QoShareDbItem>();
    db.insertShare(share);
    boost::shared_ptr<QoPlaylistDbItem> playlist = boost::make_shared<QoPlaylistDbItem>();
    db.insertPlaylist(playlist);
    boost::shared_ptr<QoInplaceFileDbItem> inplace = made<QoInplaceFileDbItem>(u"C:\\b.mp3");
    db.insertInplaceFile(inplace);
    db.commitTransaction(transaction);

    Fingerprint::FingerprintCutInformation cut;
    cut.endCut = 7;
    db.setFPCutInfo({u"id", CFpParamsUtils::toString(cut)});
    FpCutInfoDbItem stored;
    db.getFPCutInfo(u"id", stored);
    Fingerprint::FingerprintCutInformation read;
    CFpParamsUtils::fromString(stored.fpParams, read);

    CArray<QoSessionQueryItem> sessions;
    db.getAllSessions(sessions, 0);
    DbItemArray<QoShareDbItem> shares;
    db.getAllShares(shares);
    DbItemArray<QoPlaylistDbItem> playlists;
    db.getAllUserPlaylists(playlists, CString());
    DbItemArray<QoInplaceFileDbItem> inplaceFiles;
    db.getAllInplaceFiles(inplaceFiles);
    say(u"records: %d %d %d %d, cut %d",
        sessions.GetSize(),
        shares.GetSize(),
        playlists.GetSize(),
        inplaceFiles.GetSize(),
        read.endCut);
    streams(db);
    try
    {
        db.getAllUserPlaylists(playlists, u"'");
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        say(u"a quote in a pattern: %d", static_cast<int>(exception->isStatementError()));
    }
}

void collection(const CString& folder)
{
    CQoCollection::initGlobal();
    CDummyProgress progress;
    CQoCollection& own = CQoCollection::m_ownCollection;
    const bool isLoaded = own.load(folder + u"\\collection.db",
                                   CString(),
                                   CStringArray(),
                                   CQoPathsInfoMap(),
                                   false,
                                   &progress,
                                   nullptr);
    CQoFileChangeInfoList changes;
    changes.addFileToDelete(u"C:\\a.mp3");
    say(u"collection: %d, %d change, %d artists",
        static_cast<int>(isLoaded),
        changes.GetSize(),
        CLTManager::getArtists().GetSize());
    CQoCollection::cleanUpGlobal();
}

void trees()
{
    CQoSortedPtrList<CHDFile> files(&byName);
    files.add(CHDFile::createHDFile(made<QoFileDbItem>(u"C:\\b.mp3")));
    files.add(CHDFile::createHDFile(made<QoFileDbItem>(u"C:\\a.txt")));
    const auto inplace = CHDInplaceConvertedFile::createInplaceConvertedFile(
        made<QoInplaceFileDbItem>(u"C:\\c.mp3"));
    const auto offline = CHDOfflineFile::createHDOfflineFile(made<QoFileDbItem>(u"C:\\d.mp3"));
    const auto hit = CHDSearchResult::createSearchResult(made<QoFileDbItem>(u"C:\\web::clip_1"));
    const CSourceObject source(u"Radio", IPostProcessingQueue::sourceNone);
    say(u"trees: %s %s %s %s %s",
        files[0]->getPath(),
        inplace->getFileName(),
        offline->getFileTitle(),
        hit->getSource(),
        source.toString(true));
}

void namesAndRules(const CString& folder)
{
    CNSNamePattern pattern;
    pattern.setAtom(CNSAtom::Artist, u"Someone");
    CReorganizeRule rule;
    rule.m_name = u"By artist";
    auto subdir = std::make_unique<CSubdirRule>();
    subdir->m_pattern.copyFrom(pattern);
    auto rename = std::make_unique<CRenameRule>(CRenameRule::getType(0));
    rename->keepOriginal = true;
    rule.addRenameRule(rename.release(), rule.addSubdirRule(subdir.release(), nullptr));
    const CString path = folder + u"\\rule.xml";
    CReorganizeRuleXmlParser::saveReorganizeRule(&rule, path);
    const std::unique_ptr<CReorganizeRule> read(CReorganizeRuleXmlParser::loadReorganizeRule(path));
    say(u"rules: %s, %d node, %s",
        read ? read->m_name : CString(u"none"),
        read ? read->m_nodes.GetSize() : 0,
        pattern.getAtomValue(CNSAtom::Artist));
}
} // namespace

int main(int, char** argv)
{
    const CString folder = qo::fromSystemPath(argv[1]);
    MemoryConfig config;
    CKVModule module;
    initQoKernel(&config, &module);
    kernel(folder);
    tags(folder);
    records(folder);
    collection(folder);
    trees();
    namesAndRules(folder);
}
