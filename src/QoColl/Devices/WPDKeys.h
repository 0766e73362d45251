#pragma once

#include "platform/PortableDevices.h"

/// The properties and kinds of objects that the kernel uses on portable devices, by the numbers
/// that such devices are described with.
namespace qo::wpd
{
inline constexpr GUID objectFormatId = {
    0xEF6B490D, 0x5CD8, 0x437A, {0xAF, 0xFC, 0xDA, 0x8B, 0x60, 0xEE, 0x4A, 0x3C}};
inline constexpr GUID mediaFormatId = {
    0x2ED8BA05, 0x0AD3, 0x42DC, {0xB0, 0xD0, 0xBC, 0x95, 0xAC, 0x39, 0x6A, 0xC8}};
inline constexpr GUID musicFormatId = {
    0xB324F56A, 0xDC5D, 0x46E5, {0xB6, 0xDF, 0xD2, 0xEA, 0x41, 0x48, 0x88, 0xC6}};
inline constexpr GUID storageFormatId = {
    0x01A3057A, 0x74D6, 0x4E80, {0xBE, 0xA7, 0xDC, 0x4C, 0x21, 0x2C, 0xE5, 0x0A}};
inline constexpr GUID functionalFormatId = {
    0x8F052D93, 0xABCA, 0x4FC5, {0xA5, 0xAC, 0xB0, 0x1D, 0xF4, 0xDB, 0xE5, 0x98}};

inline constexpr PropertyKey objectParentId{objectFormatId, 3};         ///< text
inline constexpr PropertyKey objectName{objectFormatId, 4};             ///< text
inline constexpr PropertyKey objectFormat{objectFormatId, 6};           ///< id, one of a format
inline constexpr PropertyKey objectContentType{objectFormatId, 7};      ///< id
inline constexpr PropertyKey objectSize{objectFormatId, 11};            ///< 64 bits, bytes
inline constexpr PropertyKey objectOriginalName{objectFormatId, 12};    ///< text, the file's name
inline constexpr PropertyKey objectCreated{objectFormatId, 18};         ///< time
inline constexpr PropertyKey objectModified{objectFormatId, 19};        ///< time
inline constexpr PropertyKey mediaBitrate{mediaFormatId, 2};            ///< 32 bits
inline constexpr PropertyKey mediaReleaseDate{mediaFormatId, 14};       ///< time
inline constexpr PropertyKey mediaTitle{mediaFormatId, 18};             ///< text
inline constexpr PropertyKey mediaDuration{mediaFormatId, 19};          ///< 64 bits, milliseconds
inline constexpr PropertyKey mediaArtist{mediaFormatId, 24};            ///< text
inline constexpr PropertyKey mediaGenre{mediaFormatId, 32};             ///< text
inline constexpr PropertyKey musicAlbum{musicFormatId, 3};              ///< text
inline constexpr PropertyKey musicTrack{musicFormatId, 4};              ///< 32 bits
inline constexpr PropertyKey musicLyrics{musicFormatId, 6};             ///< text
inline constexpr PropertyKey storageCapacity{storageFormatId, 4};       ///< 64 bits, bytes
inline constexpr PropertyKey storageFree{storageFormatId, 5};           ///< 64 bits, bytes
inline constexpr PropertyKey functionalCategory{functionalFormatId, 2}; ///< id

inline constexpr GUID categoryStorage = {
    0x23F05BBC, 0x15DE, 0x4C2A, {0xA5, 0x5B, 0xA9, 0xAF, 0x5C, 0xE4, 0x12, 0xEF}};
inline constexpr GUID contentFunctional = {
    0x99ED0160, 0x17FF, 0x4C44, {0x9D, 0x98, 0x1D, 0x7A, 0x6F, 0x94, 0x19, 0x21}};
inline constexpr GUID contentFolder = {
    0x27E2E392, 0xA111, 0x48E0, {0xAB, 0x0C, 0xE1, 0x77, 0x05, 0xA0, 0x5F, 0x85}};
inline constexpr GUID contentAudio = {
    0x4AD2C85E, 0x5E2D, 0x45E5, {0x88, 0x64, 0x4F, 0x22, 0x9E, 0x3C, 0x6C, 0xF0}};
inline constexpr GUID contentVideo = {
    0x9261B03C, 0x3D78, 0x4519, {0x85, 0xE3, 0x02, 0xC5, 0xE1, 0xF5, 0x0B, 0xB9}};
inline constexpr GUID contentPlaylist = {
    0x1A33F7E4, 0xAF13, 0x48F5, {0x99, 0x4E, 0x77, 0x36, 0x9D, 0xFE, 0x04, 0xA3}};
inline constexpr GUID contentImage = {
    0xEF2107D5, 0xA52A, 0x4243, {0xA2, 0x6B, 0x62, 0xD4, 0x17, 0x6D, 0x76, 0x03}};
inline constexpr GUID contentDocument = {
    0x680ADF52, 0x950A, 0x4041, {0x9B, 0x41, 0x65, 0xE3, 0x93, 0x64, 0x81, 0x55}};

/// A format with that 16-bit code.
constexpr GUID formatOf(std::uint16_t code)
{
    return {static_cast<std::uint32_t>(code) << 16,
            0xAE6C,
            0x4804,
            {0x98, 0xBA, 0xC5, 0x7B, 0x46, 0x96, 0x5F, 0xE7}};
}
/// Of an object without content.
inline constexpr GUID formatPropertiesOnly = formatOf(0x3001);
inline constexpr GUID formatIcon = {
    0x077232ED, 0x102C, 0x4638, {0x9C, 0x22, 0x83, 0xF1, 0x42, 0xBF, 0xC8, 0x22}};
} // namespace qo::wpd
