#pragma once

#include "plugins/http/HttpDownload.h"
#include "plugins/subsonic/SubsonicClient.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qo::host
{
/// An artist, or an album of one. Several of one name, such as two editions of an album, are one
/// here, since a path has names alone.
class SubsonicGroup final : public IGenericResult
{
public:
    SubsonicGroup(EKind kind, const CString& artist, const CString& album)
        : m_kind(kind), m_artist(artist), m_album(album)
    {
    }

    EKind GetKind() const override { return m_kind; }
    CString GetArtist() const override { return m_artist; }
    CString GetAlbum() const override { return m_album; }
    const std::vector<std::string>& ids() const { return m_ids; }
    void addId(const std::string& id) { m_ids.push_back(id); }

private:
    const EKind m_kind;
    const CString m_artist;
    const CString m_album;
    std::vector<std::string> m_ids;
};

class SubsonicTrack final : public ITrackResult
{
public:
    explicit SubsonicTrack(SubsonicItem item) : m_item(std::move(item)) {}

    CString GetArtist() const override { return m_item.artist; }
    CString GetAlbum() const override { return m_item.album; }
    CString GetTitle() const override { return m_item.title; }
    CString GetExtension() const override { return m_item.suffix; }
    std::int64_t GetSize() const override { return m_item.size; }
    int GetDuration() const override { return m_item.duration; }
    CString GetText() const override { return subsonicTrackText(m_item); }
    const std::string& id() const { return m_item.id; }

private:
    const SubsonicItem m_item;
};

/// Fetches a track as the server has it.
class SubsonicDownload final : public HttpDownload
{
public:
    SubsonicDownload(std::shared_ptr<SubsonicClient> client,
                     const SubsonicTrack& track,
                     const CString& target)
        : HttpDownload(target, track.GetSize()), m_client(std::move(client)), m_id(track.id())
    {
    }

private:
    HttpAnswer send(HttpRequest request) override { return m_client->fetch(m_id, request); }

    const std::shared_ptr<SubsonicClient> m_client;
    const std::string m_id;
};
} // namespace qo::host
