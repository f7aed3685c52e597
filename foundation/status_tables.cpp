#include "foundation/status_tables.h"

#include "foundation/status.h"

namespace AUX::status_detail {
namespace {

constexpr StatusMessage kCommon[] = {
    {0x0000, "Ok"},
    {0x0001, "Invalid argument"},
    {0x0002, "Invalid file format"},
    {0x0003, "Unsupported file format"},
    {0x0004, "Invalid page number"},
    {0x0005, "File corrupted"},
    {0x0006, "Unsupported compression type"},
    {0x0007, "Incompatible file format"},
    {0x0008, "invalid format index"},
    {0x0009, "Unsupported operation"},
    {0x000A, "Invalid access mode"},
    {0x000B, "Invalid seek mode"},
    {0x000C, "Invalid seek pos"},
    {0x000D, "Critical failure"},
    {0x000E, "Failure"},
    {0x000F, "Component failed to initialize"},
    {0x0010, "Component is not initialized"},
    {0x0011, "Internal error"},
    {0x0012, "Unclassified error"},
    {0x0013, "Unsupported color space"},
    {0x0014, "Invalid format identifier"},
    {0x0016, "Invalid file size"},
    {0x0017, "Compression error"},
    {0x0018, "Need more input data"},
    {0x0019, "Need more output space"},
    {0x001A, "Reached End-Of-Data marker"},
    {0x001B, "End Of Data reached"},
    {0x001C, "Object is locked"},
    {0x001D, "Operation history locked"},
    {0x02BC, "Invalid structure"},
    {0x03E8, "Insufficient memory"},
    {0x03E9, "Invalid pointer"},
    {0x03EA, "Too large data was requested"},
    {0x03EB, "Buffer is too small"},
    {0x04B0, "Not implemented"},
    {0x04B2, "Unsupported value"},
    {0x04B3, "Operation is not permitted"},
    {0x05DC, "Incompatible internal format"},
    {0x04C7, "The operation was canceled by the user"},
};

constexpr StatusMessage kInputOutput[] = {
    {0x1001, "Unexpected error reading from file"},
    {0x1002, "Unexpected error writing to file"},
};

constexpr StatusMessage kFrameBuffer[] = {
    {0x1001, "Too many rectangles requested"},
    {0x1002, "Rectangle intersects with another one"},
    {0x1003, "Error accessing temporary file"},
};

constexpr std::uint32_t NumberOf(StatusCategory category) {
    return static_cast<std::uint32_t>(category);
}

// The operating system has no table: its texts come from the system.
constexpr BuiltInCategory kBuiltIn[] = {
    {NumberOf(StatusCategory::InputOutput), kInputOutput, "IO subsystem"},
    {NumberOf(StatusCategory::Common), kCommon, "Common"},
    {NumberOf(StatusCategory::FrameBuffer), kFrameBuffer, "Frame buffer"},
    {NumberOf(StatusCategory::Memory), {}, "Memory subsystem"},
    {NumberOf(StatusCategory::OperatingSystem), {}, "Operating system"},
};

}  // namespace

std::span<const StatusMessage> CommonMessages() noexcept { return kCommon; }

std::span<const BuiltInCategory> BuiltInCategories() noexcept { return kBuiltIn; }

}  // namespace AUX::status_detail
