#!/usr/bin/env python3
"""Reads the IDL of a type library for the builds that have no compiler of the system's for it.

usage: type_library.py binary OUTPUT IDL [FOLDER...]   the library, as docs/type-information.md says
       type_library.py header OUTPUT IDL [FOLDER...]   its interfaces, enumerations and ids as C++
       type_library.py source OUTPUT NAME IDL [FOLDER...]
                                      the binary as platform::types::NAME(), a C++ source
FOLDERs are searched for imported files. What the reader does not know ends it with an error.
"""
import os
import struct
import sys

from idl_reader import (ALIAS, BASE_LIBRARY, COCLASS, DISPATCH, ENUM, INTERFACE, VT_BSTR, VT_PTR,
                        VT_R4, VT_R8, VT_SAFEARRAY, VT_USERDEFINED, IdlError, read_library)


def text(value):
    if value is None:
        return struct.pack('<H', 0xFFFF)
    units = value.encode('utf-16-le')
    return struct.pack('<H', len(units) // 2) + units


def guid_fields(value):
    a, b, c, d, e = value.split('-')
    tail = bytes.fromhex(d + e)
    return int(a, 16), int(b, 16), int(c, 16), tail


def guid(value):
    a, b, c, tail = guid_fields(value or '00000000-0000-0000-0000-000000000000')
    return struct.pack('<IHH', a, b, c) + tail


def kind_of(described):
    vt, inner = described
    data = struct.pack('<H', vt)
    if vt in (VT_PTR, VT_SAFEARRAY):
        return data + kind_of(inner)
    if vt == VT_USERDEFINED:
        return data + struct.pack('<I', inner)
    return data


def constant(vt, value):
    data = struct.pack('<H', vt)
    if vt == VT_BSTR:
        return data + text(value)
    if vt in (VT_R4, VT_R8):
        return data + struct.pack('<d' if vt == VT_R8 else '<f4x', value)
    return data + struct.pack('<Q', value & 0xFFFFFFFFFFFFFFFF)


def parameter(p):
    data = text(p.name) + kind_of(p.type) + struct.pack('<H', p.flags)
    return data + (constant(*p.default) if p.default else b'')


def function(f):
    data = struct.pack('<i', f.id) + text(f.name) + text(f.help)
    data += struct.pack('<BH', f.kind, f.flags) + kind_of(f.type)
    return data + struct.pack('<B', len(f.parameters)) + b''.join(map(parameter, f.parameters))


def variable(v):
    data = struct.pack('<i', v.id) + text(v.name) + text(v.help) + kind_of(v.type)
    return data + struct.pack('<BB', v.flags, v.value is not None) + (
        constant(*v.value) if v.value is not None else b'')


def entry(t):
    data = struct.pack('<B', t.kind) + guid(t.guid) + struct.pack('<HHH', t.flags, *t.version)
    data += text(t.name) + text(t.help)
    if t.kind == ALIAS:
        data += kind_of(t.alias)
    data += struct.pack('<H', len(t.implements))
    data += b''.join(struct.pack('<II', *i) for i in t.implements)
    data += struct.pack('<H', len(t.variables)) + b''.join(map(variable, t.variables))
    return data + struct.pack('<H', len(t.functions)) + b''.join(map(function, t.functions))


def binary(library):
    data = b'QTL1' + guid(library.guid)
    data += struct.pack('<HHIH', *library.version, library.lcid, library.flags)
    data += text(library.name) + text(library.help)
    return data + struct.pack('<H', len(library.types)) + b''.join(map(entry, library.types))


def source(library, name):
    data = binary(library)
    lines = [', '.join(f'0x{b:02X}' for b in data[i:i + 16]) for i in range(0, len(data), 16)]
    rows = ',\n    '.join(lines)
    return ('#include "platform/posix/typeinfo/built_in.h"\n\nnamespace platform::types {\n\n'
            f'static const unsigned char kBytes[] = {{\n    {rows}}};\n\n'
            f'std::span<const std::byte> {name}() noexcept {{\n'
            '    return std::as_bytes(std::span(kBytes));\n}\n\n'
            '}  // namespace platform::types\n')


def cpp_guid(value):
    a, b, c, tail = guid_fields(value)
    return (f'0x{a:08X}, 0x{b:04X}, 0x{c:04X},\n    {{' +
            ', '.join(f'0x{byte:02X}' for byte in tail) + '}')


def header(library):
    out = ('#pragma once\n\n'
           f'/// The types of the library {library.name}; made of its IDL.\n\n'
           '#include "platform/typeinfo.h"\n\n'
           f'inline constexpr GUID LIBID_{library.name}{{{cpp_guid(library.guid)}}};\n')
    for t in library.types:
        if t.is_imported:
            out += f'struct {t.name};\n'
    for t in library.types:
        if t.kind == COCLASS:
            out += f'inline constexpr CLSID CLSID_{t.name}{{{cpp_guid(t.guid)}}};\n'
        elif t.kind == ENUM:
            values = ''.join(f'    {v.name} = {v.value[1]},\n' for v in t.variables)
            # A caller may pass any number: with a width of its own each is a value.
            out += f'\nenum {t.name} : int {{\n{values}}};\n'
        elif t.kind == INTERFACE and not t.is_imported:
            out += f'\nstruct {t.name} : {t.base} {{\n'
            for f in t.functions:
                parameters = ', '.join(f'{p.cpp} {p.name}' for p in f.parameters)
                out += f'    virtual {f.cpp} STDMETHODCALLTYPE {f.cpp_name}({parameters}) = 0;\n'
            out += f'}};\nQVD_INTERFACE_ID({t.name}, {cpp_guid(t.guid)});\n'
    return out


def main():
    job, output = sys.argv[1:3]
    rest = sys.argv[3:]
    name = rest.pop(0) if job == 'source' else ''
    try:
        library = read_library(rest[0], rest[1:])
    except IdlError as error:
        sys.exit(str(error))
    made = {'binary': lambda: binary(library), 'header': lambda: header(library).encode(),
            'source': lambda: source(library, name).encode()}[job]()
    os.makedirs(os.path.dirname(os.path.abspath(output)), exist_ok=True)
    with open(output, 'wb') as file:
        file.write(made)


main()
