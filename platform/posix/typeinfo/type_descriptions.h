#pragma once

/// The descriptions that type information gives (oaidl). Pointers in them lead to memory of the
/// type information that gave them.

#include "platform/posix/typeinfo/dispatch_types.h"

using HREFTYPE = DWORD;

enum TYPEKIND {
    TKIND_ENUM = 0,
    TKIND_RECORD = 1,
    TKIND_MODULE = 2,
    TKIND_INTERFACE = 3,
    TKIND_DISPATCH = 4,
    TKIND_COCLASS = 5,
    TKIND_ALIAS = 6,
    TKIND_UNION = 7,
};
enum SYSKIND { SYS_WIN16 = 0, SYS_WIN32 = 1, SYS_MAC = 2, SYS_WIN64 = 3 };
enum CALLCONV { CC_STDCALL = 4 };
enum FUNCKIND { FUNC_VIRTUAL = 0, FUNC_PUREVIRTUAL = 1, FUNC_DISPATCH = 4 };
enum INVOKEKIND {
    INVOKE_FUNC = 1,
    INVOKE_PROPERTYGET = 2,
    INVOKE_PROPERTYPUT = 4,
    INVOKE_PROPERTYPUTREF = 8,
};
enum VARKIND { VAR_PERINSTANCE = 0, VAR_CONST = 2, VAR_DISPATCH = 3 };

inline constexpr WORD TYPEFLAG_FCANCREATE = 0x2;
inline constexpr WORD TYPEFLAG_FHIDDEN = 0x10;
inline constexpr WORD TYPEFLAG_FDUAL = 0x40;
inline constexpr WORD TYPEFLAG_FNONEXTENSIBLE = 0x80;
inline constexpr WORD TYPEFLAG_FOLEAUTOMATION = 0x100;
inline constexpr WORD TYPEFLAG_FDISPATCHABLE = 0x1000;

inline constexpr INT IMPLTYPEFLAG_FDEFAULT = 1;
inline constexpr INT IMPLTYPEFLAG_FSOURCE = 2;
inline constexpr INT IMPLTYPEFLAG_FRESTRICTED = 4;

inline constexpr USHORT PARAMFLAG_NONE = 0;
inline constexpr USHORT PARAMFLAG_FIN = 0x1;
inline constexpr USHORT PARAMFLAG_FOUT = 0x2;
inline constexpr USHORT PARAMFLAG_FLCID = 0x4;
inline constexpr USHORT PARAMFLAG_FRETVAL = 0x8;
inline constexpr USHORT PARAMFLAG_FOPT = 0x10;
inline constexpr USHORT PARAMFLAG_FHASDEFAULT = 0x20;

struct TYPEDESC {
    union {
        TYPEDESC* lptdesc;  // VT_PTR and VT_SAFEARRAY: what it points to or holds
        HREFTYPE hreftype;  // VT_USERDEFINED
    };
    VARTYPE vt;
};

struct PARAMDESCEX {
    ULONG cBytes;
    VARIANTARG varDefaultValue;
};

struct PARAMDESC {
    PARAMDESCEX* pparamdescex;  // with PARAMFLAG_FHASDEFAULT
    USHORT wParamFlags;
};

struct ELEMDESC {
    TYPEDESC tdesc;
    PARAMDESC paramdesc;
};

struct IDLDESC {
    ULONG_PTR dwReserved;
    USHORT wIDLFlags;
};

struct TYPEATTR {
    GUID guid;
    LCID lcid;
    DWORD dwReserved;
    MEMBERID memidConstructor;
    MEMBERID memidDestructor;
    LPOLESTR lpstrSchema;
    ULONG cbSizeInstance;
    TYPEKIND typekind;
    WORD cFuncs;
    WORD cVars;
    WORD cImplTypes;
    WORD cbSizeVft;
    WORD cbAlignment;
    WORD wTypeFlags;
    WORD wMajorVerNum;
    WORD wMinorVerNum;
    TYPEDESC tdescAlias;
    IDLDESC idldescType;
};

struct FUNCDESC {
    MEMBERID memid;
    SCODE* lprgscode;
    ELEMDESC* lprgelemdescParam;
    FUNCKIND funckind;
    INVOKEKIND invkind;
    CALLCONV callconv;
    SHORT cParams;
    SHORT cParamsOpt;
    SHORT oVft;  // bytes
    SHORT cScodes;
    ELEMDESC elemdescFunc;
    WORD wFuncFlags;
};

struct VARDESC {
    MEMBERID memid;
    LPOLESTR lpstrSchema;
    union {
        ULONG oInst;
        VARIANT* lpvarValue;  // VAR_CONST
    };
    ELEMDESC elemdescVar;
    WORD wVarFlags;
    VARKIND varkind;
};

struct TLIBATTR {
    GUID guid;
    LCID lcid;
    SYSKIND syskind;
    WORD wMajorVerNum;
    WORD wMinorVerNum;
    WORD wLibFlags;
};
