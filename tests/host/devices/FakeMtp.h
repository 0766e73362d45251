#pragma once

#include <libmtp.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

/// One phone, and the calls of libmtp on it: the linker takes these before those of the library.
struct FakePhone
{
    struct Object
    {
        std::uint32_t parent = 0;
        std::string name;
        LIBMTP_filetype_t type = LIBMTP_FILETYPE_FOLDER;
        std::string content = {};
    };

    static FakePhone& instance()
    {
        static FakePhone phone;
        return phone;
    }
    /// The number of the new object.
    std::uint32_t add(const Object& object)
    {
        objects[++last] = object;
        return last;
    }
    bool fails(const char* call)
    {
        calls += std::string(call) + " ";
        if (!isPresent)
            errors = &error;
        return !isPresent || failing == call;
    }

    std::map<std::uint32_t, Object> objects;
    std::uint32_t last = 0;
    bool isPresent = true;
    bool isLocked = false; ///< shows no storage
    bool isHeld = false;   ///< by another program
    bool givesParts = true;
    std::string calls;
    std::string failing; ///< a call that fails by itself
    LIBMTP_mtpdevice_t device = {};
    LIBMTP_devicestorage_t storage = {};
    char errorText[8] = "gone";
    LIBMTP_error_t error = {LIBMTP_ERROR_USB_LAYER, errorText, nullptr};
    LIBMTP_error_t* errors = nullptr;
};

inline FakePhone& phone()
{
    return FakePhone::instance();
}

inline LIBMTP_file_t* fileOf(std::uint32_t number)
{
    const auto& object = phone().objects[number];
    LIBMTP_file_t* const file = LIBMTP_new_file_t();
    file->item_id = number;
    file->filename = ::strdup(object.name.c_str());
    file->filesize = object.content.size();
    file->modificationdate = 1'000'000'000;
    file->filetype = object.type;
    return file;
}

// NOLINTBEGIN(misc-definitions-in-headers): one source of one program includes this.
void LIBMTP_Init() {}
LIBMTP_error_number_t LIBMTP_Detect_Raw_Devices(LIBMTP_raw_device_t** list, int* count)
{
    std::puts("Device 0 is a phone.");
    *count = phone().isPresent ? 1 : 0;
    *list = static_cast<LIBMTP_raw_device_t*>(std::calloc(1, sizeof(LIBMTP_raw_device_t)));
    (*list)->device_entry.vendor_id = 0x18d1;
    (*list)->device_entry.product_id = 0x4ee1;
    (*list)->bus_location = 1;
    (*list)->devnum = 4;
    return phone().isPresent ? LIBMTP_ERROR_NONE : LIBMTP_ERROR_NO_DEVICE_ATTACHED;
}
LIBMTP_mtpdevice_t* LIBMTP_Open_Raw_Device_Uncached(LIBMTP_raw_device_t*)
{
    phone().calls += "open ";
    return phone().isHeld ? nullptr : &phone().device;
}
void LIBMTP_Release_Device(LIBMTP_mtpdevice_t*)
{
    phone().calls += "release ";
}
LIBMTP_error_t* LIBMTP_Get_Errorstack(LIBMTP_mtpdevice_t*)
{
    return phone().errors;
}
void LIBMTP_Clear_Errorstack(LIBMTP_mtpdevice_t*)
{
    phone().errors = nullptr;
}
char* LIBMTP_Get_Friendlyname(LIBMTP_mtpdevice_t*)
{
    return ::strdup("Ann's phone");
}
int LIBMTP_Get_Storage(LIBMTP_mtpdevice_t* device, int const)
{
    static char name[] = "Card";
    phone().storage.id = 0x10001;
    phone().storage.StorageDescription = name;
    phone().storage.MaxCapacity = 1000;
    phone().storage.FreeSpaceInBytes = 400;
    device->storage = phone().isLocked ? nullptr : &phone().storage;
    return phone().fails("storage") ? -1 : 0;
}
LIBMTP_file_t*
LIBMTP_Get_Files_And_Folders(LIBMTP_mtpdevice_t*, uint32_t const, uint32_t const parent)
{
    LIBMTP_file_t* first = nullptr;
    LIBMTP_file_t** end = &first;
    if (phone().fails("list"))
        return nullptr;
    for (const auto& [number, object] : phone().objects)
    {
        if (object.parent != parent)
            continue;
        *end = fileOf(number);
        end = &(*end)->next;
    }
    return first;
}
LIBMTP_file_t* LIBMTP_new_file_t()
{
    return static_cast<LIBMTP_file_t*>(std::calloc(1, sizeof(LIBMTP_file_t)));
}
void LIBMTP_destroy_file_t(LIBMTP_file_t* file)
{
    std::free(file->filename);
    std::free(file);
}
LIBMTP_file_t* LIBMTP_Get_Filemetadata(LIBMTP_mtpdevice_t*, uint32_t const number)
{
    return phone().fails("metadata") || !phone().objects.contains(number) ? nullptr
                                                                          : fileOf(number);
}
LIBMTP_track_t* LIBMTP_Get_Trackmetadata(LIBMTP_mtpdevice_t*, uint32_t const)
{
    if (phone().fails("track"))
        return nullptr;
    auto* const track = static_cast<LIBMTP_track_t*>(std::calloc(1, sizeof(LIBMTP_track_t)));
    track->artist = ::strdup("Kino");
    track->date = ::strdup("19880101T000000");
    track->tracknumber = 3;
    track->duration = 4000;
    return track;
}
void LIBMTP_destroy_track_t(LIBMTP_track_t* track)
{
    std::free(track->artist);
    std::free(track->date);
    std::free(track);
}
int LIBMTP_Check_Capability(LIBMTP_mtpdevice_t*, LIBMTP_devicecap_t)
{
    return phone().givesParts ? 1 : 0;
}
int LIBMTP_GetPartialObject(LIBMTP_mtpdevice_t*,
                            uint32_t const number,
                            uint64_t from,
                            uint32_t size,
                            unsigned char** data,
                            unsigned int* count)
{
    if (phone().fails("part"))
        return -1;
    const std::string part = phone().objects[number].content.substr(from, size);
    *data = static_cast<unsigned char*>(std::malloc(part.size() + 1));
    std::memcpy(*data, part.data(), part.size());
    *count = static_cast<unsigned>(part.size());
    return 0;
}
int LIBMTP_Get_File_To_File_Descriptor(
    LIBMTP_mtpdevice_t*, uint32_t const number, int const file, LIBMTP_progressfunc_t, void const*)
{
    const std::string& content = phone().objects[number].content;
    return ::write(file, content.data(), content.size()) < 0 ? -1 : 0;
}
int LIBMTP_Send_File_From_File_Descriptor(
    LIBMTP_mtpdevice_t*, int const from, LIBMTP_file_t* file, LIBMTP_progressfunc_t, void const*)
{
    if (phone().fails("send"))
        return -1;
    std::string content(file->filesize, '\0');
    if (::read(from, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
        return -1;
    file->item_id = phone().add({file->parent_id, file->filename, file->filetype, content});
    return 0;
}
uint32_t LIBMTP_Create_Folder(LIBMTP_mtpdevice_t*, char* name, uint32_t parent, uint32_t)
{
    return phone().fails("folder") ? 0 : phone().add({parent, name});
}
int LIBMTP_Is_Property_Supported(LIBMTP_mtpdevice_t*,
                                 LIBMTP_property_t const property,
                                 LIBMTP_filetype_t const type)
{
    return !phone().fails("property") && property == LIBMTP_PROPERTY_ObjectFileName &&
                   type == LIBMTP_FILETYPE_MP3
               ? 1
               : 0;
}
int LIBMTP_Set_File_Name(LIBMTP_mtpdevice_t*, LIBMTP_file_t* file, const char* name)
{
    if (phone().fails("rename"))
        return -1;
    phone().objects[file->item_id].name = name;
    return 0;
}
int LIBMTP_Delete_Object(LIBMTP_mtpdevice_t*, uint32_t number)
{
    return phone().fails("delete") || phone().objects.erase(number) == 0 ? -1 : 0;
}
// NOLINTEND(misc-definitions-in-headers)
