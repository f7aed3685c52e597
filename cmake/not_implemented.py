#!/usr/bin/env python3
"""Writes platform::NotImplemented<X> for interfaces X of the browser, from the SDK's own headers or
from those of the native layer, which declare fewer operations.

usage: not_implemented.py OUTPUT HEADER... -- INTERFACE...

Each class derives from its interface and answers E_NOTIMPL to every operation of it and its bases
up to IDispatch or IUnknown; out-parameters that take an interface or a text are nulled first, since callers
may release what they find there.
"""
import re
import sys

BLOCK = re.compile(
    r'(?:MIDL_INTERFACE\("[^"]*"\)|struct)\s*(\w+)\s*:\s*(?:public\s+)?(\w+)\s*\{(.*?)\n\};', re.S)
OPERATION = re.compile(r'virtual\s+(.*?)\s+STDMETHODCALLTYPE\s+(\w+)\s*\((.*?)\)\s*=\s*0;', re.S)
NULLED = re.compile(r'(\*\s*\*|BSTR\s*\*)\s*(\w+)$')

DISPATCH = '''    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** p) override {
        if (p) *p = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
'''


def parameter(text):
    """The declaration without default value, and the name to null or None."""
    text = ' '.join(text.split('=')[0].split())
    nulled = NULLED.search(text)
    if nulled:
        return text, nulled.group(2)
    return re.sub(r'\w+$', '', text).strip(), None


def operation(result, name, parameters):
    taken = [parameter(p) for p in parameters.split(',') if p.strip()]
    nulled = ''.join(f'if ({n}) *{n} = nullptr; ' for _, n in taken if n)
    declared = ', '.join(d for d, _ in taken)
    return (f'    {result} STDMETHODCALLTYPE {name}({declared}) override '
            f'{{ {nulled}return E_NOTIMPL; }}\n')


def main():
    split = sys.argv.index('--')
    output, headers, wanted = sys.argv[1], sys.argv[2:split], sys.argv[split + 1:]
    interfaces = {}
    for header in headers:
        with open(header, encoding='latin-1') as file:
            source = file.read()
            for name, base, body in BLOCK.findall(source):
                interfaces[name] = (base, OPERATION.findall(body))
    text = ('#pragma once\n\n#include "platform/band.h"\n#include "platform/html.h"\n\n'
            'namespace platform {\n\n'
            'template <class Interface>\n'
            'class NotImplemented;\n')
    for name in wanted:
        body, base = '', name
        while base not in ('IDispatch', 'IUnknown'):
            if base not in interfaces:
                sys.exit(f'{sys.argv[0]}: no interface {base} in {" ".join(headers)}')
            base, operations = interfaces[base]
            body = ''.join(operation(*o) for o in operations) + body
        dispatch = DISPATCH if base == 'IDispatch' else ''
        text += (f'\ntemplate <>\nclass NotImplemented<{name}> : public {name} {{\n'
                 f'public:\n    using Implements = {name};\n{dispatch}{body}}};\n')
    text += '\n}  // namespace platform\n'
    with open(output, 'w', encoding='ascii') as file:
        file.write(text)


main()
