#pragma once

/// Whoever has a stream may implement it: the layer has none of its own.

#include "platform/posix/com_types.h"

inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001);
inline constexpr HRESULT STG_E_ACCESSDENIED = static_cast<HRESULT>(0x80030005);
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009);
inline constexpr HRESULT STG_E_READFAULT = static_cast<HRESULT>(0x8003001E);

enum STREAM_SEEK : DWORD { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };
enum STGTY : DWORD { STGTY_STREAM = 2 };
inline constexpr DWORD STGM_READ = 0;
inline constexpr DWORD STGM_WRITE = 1;
inline constexpr DWORD STGM_READWRITE = 2;

struct STATSTG {
    LPOLESTR pwcsName;
    DWORD type;
    ULARGE_INTEGER cbSize;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    CLSID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};

struct ISequentialStream : IUnknown {
    /// S_FALSE, or S_OK with fewer bytes, at the end. \param done  May be null.
    virtual HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG bytes, ULONG* done) = 0;
    virtual HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG bytes, ULONG* done) = 0;
};
QVD_INTERFACE_ID(ISequentialStream, 0x0C733A30, 0x2A1C, 0x11CE,
                 {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D});

struct IStream : ISequentialStream {
    /// \param origin  A STREAM_SEEK. \param position  May be null; gets the new place.
    virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                           ULARGE_INTEGER* position) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER bytes,
                                             ULARGE_INTEGER* read, ULARGE_INTEGER* written) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit(DWORD flags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
    virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER bytes,
                                                 DWORD kind) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER bytes,
                                                   DWORD kind) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* facts, DWORD flags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IStream** clone) = 0;
};
QVD_INTERFACE_ID(IStream, 0x0000000C, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});
