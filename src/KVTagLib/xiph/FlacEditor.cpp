#include "KVTagLib/xiph/FlacEditor.h"

#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/id3/Id3v1Tag.h"
#include "KVTagLib/id3/Id3v2Editor.h"
#include "KVTagLib/xiph/FlacBlocks.h"
#include "KVTagLib/xiph/XiphEditor.h"

#include <taglib/tiostream.h>

#include <algorithm>
#include <vector>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
/// Replaces the first front cover, with picture blocks before pictures in the comment.
void applyPicture(const ByteVector& content, std::vector<FlacBlock>& blocks, XiphEditor& xiph)
{
    const auto isFront = [](const FlacBlock& block)
    {
        return block.type == FlacBlock::picture &&
               pictureTypeOf(block.content) == pictureType::frontCover;
    };
    const auto front = std::ranges::find_if(blocks, isFront);
    if (front != blocks.end())
        front->content = changedPicture(front->content, content);
    else if (const int entry = xiph.frontCover(); entry >= 0)
        xiph.setPicture(entry, content);
    else
        blocks.push_back({FlacBlock::picture, changedPicture({}, content)});
}

/// Changes the comment, which is made if there is none, and the pictures. False if the comment is
/// damaged.
bool applyToBlocks(const TagChanges& changes, std::vector<FlacBlock>& blocks)
{
    const auto isComment = [](const FlacBlock& block)
    { return block.type == FlacBlock::comment && !block.content.isEmpty(); };
    auto found = std::ranges::find_if(blocks, isComment);
    if (found == blocks.end())
    {
        // No vendor and no entries.
        blocks.push_back({FlacBlock::comment, ByteVector(8, 0)});
        found = blocks.end() - 1;
    }
    const auto place = found - blocks.begin();
    XiphEditor xiph;
    if (!xiph.load(found->content))
        return false;
    xiph.apply(changes);
    if (changes.picture())
        applyPicture(*changes.picture(), blocks, xiph);
    blocks[static_cast<std::size_t>(place)].content = xiph.render();
    const auto isRemoved = [&](const FlacBlock& block)
    {
        return block.type == FlacBlock::picture &&
               changes.removesPicture(pictureTypeOf(block.content));
    };
    std::erase_if(blocks, isRemoved);
    return true;
}
} // namespace

void editFlac(IOStream& file, const TagChanges& changes)
{
    file.seek(0);
    const ByteVector head = file.readBlock(Id3v2Editor::headerBytes);
    const bool hasId3v2 = head.startsWith("ID3");
    if (hasId3v2 && Id3v2Editor::sizeOf(head) == 0)
        throw TagRefusal(withCopyAdvice(u"its ID3v2 tag is damaged"));
    FlacBlocks flac;
    if (!flac.load(file) || !applyToBlocks(changes, flac.blocks))
        throw TagRefusal(withCopyAdvice(u"its comment is damaged, or a block before the sound"));
    if (!flac.store(file))
        throw TagRefusal(u"its comment or a picture would be larger than 16 MiB, which FLAC "
                         u"cannot hold");
    applyToId3v1(changes, file);
    if (hasId3v2)
        applyToId3v2(changes, true, file);
}
} // namespace KVTagLib
