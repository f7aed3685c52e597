"""Reads interface definitions (IDL) into plain records: enough of the language for type libraries
of enumerations, aliases, interfaces, dispatch interfaces and classes."""
import os
import re
from dataclasses import dataclass, field

ENUM, INTERFACE, DISPATCH, COCLASS, ALIAS = 0, 3, 4, 5, 6
VT_I4, VT_R4, VT_R8, VT_BSTR, VT_BOOL, VT_INT = 3, 4, 5, 8, 11, 22
VT_DISPATCH, VT_UNKNOWN, VT_VOID, VT_HRESULT = 9, 13, 24, 25
VT_PTR, VT_SAFEARRAY, VT_USERDEFINED = 26, 27, 29
# References to types of the library of base interfaces: this and their number in it.
BASE_LIBRARY = 0x80000000
BASE_TYPES = ['IUnknown', 'IDispatch']

# name: its VARTYPE, and its name in C++.
PLAIN = {
    'char': (16, 'CHAR'), 'unsigned char': (17, 'BYTE'), 'byte': (17, 'BYTE'), 'BYTE': (17, 'BYTE'),
    'short': (2, 'SHORT'), 'unsigned short': (18, 'USHORT'), 'WORD': (18, 'WORD'),
    'int': (22, 'INT'), 'unsigned int': (23, 'UINT'), 'UINT': (23, 'UINT'),
    'long': (VT_I4, 'LONG'), 'unsigned long': (19, 'ULONG'), 'DWORD': (19, 'DWORD'),
    'hyper': (20, 'LONGLONG'), '__int64': (20, 'LONGLONG'), 'unsigned hyper': (21, 'ULONGLONG'),
    'unsigned __int64': (21, 'ULONGLONG'), 'float': (VT_R4, 'float'), 'double': (VT_R8, 'double'),
    'CY': (6, 'CY'), 'DECIMAL': (14, 'DECIMAL'), 'DATE': (7, 'DATE'), 'BSTR': (VT_BSTR, 'BSTR'), 'SCODE': (10, 'SCODE'),
    'VARIANT_BOOL': (VT_BOOL, 'VARIANT_BOOL'), 'VARIANT': (12, 'VARIANT'),
    'void': (VT_VOID, 'void'), 'HRESULT': (VT_HRESULT, 'HRESULT'), 'LPSTR': (30, 'LPSTR'),
    'LPWSTR': (31, 'LPWSTR'), 'LPCWSTR': (31, 'LPCWSTR'), 'LPOLESTR': (31, 'LPOLESTR'),
    'GUID': (VT_VOID, 'GUID'),  # only behind a pointer
}
PARAMETER_FLAGS = {'in': 1, 'out': 2, 'lcid': 4, 'retval': 8, 'optional': 16, 'defaultvalue': 32}
FUNCTION_FLAGS = {'restricted': 1, 'source': 2, 'bindable': 4, 'hidden': 64}
TYPE_FLAGS = {'appobject': 1, 'hidden': 0x10, 'control': 0x20, 'dual': 0x1140,
              'nonextensible': 0x80, 'oleautomation': 0x100, 'restricted': 0x200}
IMPLEMENTED_FLAGS = {'default': 1, 'source': 2, 'restricted': 4}
LIBRARY_FLAGS = {'restricted': 1, 'control': 2, 'hidden': 4}
INVOKE = {'propget': (2, 'get_'), 'propput': (4, 'put_'), 'propputref': (8, 'putref_')}


class IdlError(Exception):
    pass


@dataclass
class Parameter:
    name: str
    type: tuple
    cpp: str
    flags: int
    default: tuple


@dataclass
class Function:
    id: int
    name: str
    help: str
    kind: int
    flags: int
    type: tuple
    cpp: str
    cpp_name: str
    parameters: list


@dataclass
class Variable:
    id: int
    name: str
    help: str
    type: tuple
    flags: int = 0
    value: tuple = None


@dataclass
class Type:
    kind: int
    name: str
    guid: str = None
    help: str = None
    flags: int = 0
    version: tuple = (0, 0)
    base: str = None
    depth: int = 0  # of an interface: how many it derives from
    is_imported: bool = False  # from another file, and listed since the library names it
    alias: tuple = None
    implements: list = field(default_factory=list)
    variables: list = field(default_factory=list)
    functions: list = field(default_factory=list)


@dataclass
class Library:
    name: str
    guid: str
    help: str
    version: tuple
    lcid: int
    flags: int = 8  # LIBFLAG_FHASDISKIMAGE
    types: list = field(default_factory=list)


TOKEN = re.compile(r'\s+|//[^\n]*|/\*.*?\*/|(?P<token>"(?:\\.|[^"\\])*"|'
                   r'[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}|'
                   r'0[xX][0-9A-Fa-f]+|\d+\.\d+|\w+|.)', re.S)


INCLUDE = re.compile(r'^#include "([^"]+)"$', re.M)


class Reader:
    def __init__(self, path, folders, library_types=None, known=None):
        self.path, self.folders = path, folders
        self.known = known if known is not None else {}  # name: Type, of every file
        self.listed = library_types if library_types is not None else []
        with open(path, encoding='utf-8') as file:
            text = INCLUDE.sub(self.included, file.read())
            self.tokens = [m['token'] for m in TOKEN.finditer(text) if m['token']]
        self.at = 0
        self.described = None

    def included(self, match):
        """The text of a file beside this one."""
        with open(os.path.join(os.path.dirname(self.path), match[1]), encoding='utf-8') as file:
            return file.read()

    def fail(self, why):
        near = ' '.join(self.tokens[max(self.at - 4, 0):self.at + 4])
        raise IdlError(f'{self.path}: {why} near "{near}"')

    def peek(self):
        return self.tokens[self.at] if self.at < len(self.tokens) else ''

    def take(self, wanted=None):
        token = self.peek()
        if not token or (wanted and token != wanted):
            self.fail(f'{wanted or "more"} expected')
        self.at += 1
        return token

    def took(self, token):
        if self.peek() != token:
            return False
        self.at += 1
        return True

    def string(self):
        token = self.take()
        if token[0] != '"':
            self.fail('text expected')
        return re.sub(r'\\(.)', r'\1', token[1:-1])

    def number(self):
        sign = -1 if self.took('-') else 1
        token = self.take()
        try:
            return sign * (float(token) if '.' in token else int(token, 0))
        except ValueError:
            self.fail('number expected')

    def attributes(self):
        """name: value, True for those without one. The value of `defaultvalue` may be a text."""
        found = {}
        if not self.took('['):
            return found
        while not self.took(']'):
            name = self.take()
            found[name] = True
            if self.took('('):
                if self.peek()[0] == '"':
                    found[name] = self.string()
                elif re.match(r'[0-9A-Fa-f]{8}-', self.peek()) or self.peek()[0].isalpha():
                    found[name] = self.take()
                elif name == 'version':
                    major, _, minor = self.take().partition('.')
                    found[name] = (int(major), int(minor or 0))
                else:
                    found[name] = self.number()
                self.take(')')
            self.took(',')
        return found

    def type(self):
        """The type at hand: its description, and what C++ calls it."""
        constant = self.took('const')
        name = self.take()
        if name == 'SAFEARRAY':
            self.take('(')
            inner, _ = self.type()
            self.take(')')
            described, cpp = (VT_SAFEARRAY, inner), 'SAFEARRAY*'
        else:
            if name in ('unsigned', 'signed'):
                plain = self.take() if f'unsigned {self.peek()}' in PLAIN else 'int'
                name = f'unsigned {plain}' if name == 'unsigned' else plain
            elif name in ('interface', 'enum', 'struct'):
                name = self.take()
            described, cpp = self.named(name)
        while self.took('*'):
            is_object = described[0] in (VT_DISPATCH, VT_UNKNOWN) and cpp in BASE_TYPES
            described = described if is_object else (VT_PTR, described)
            cpp += '*'
        return described, 'const ' * constant + cpp

    def named(self, name):
        if name in PLAIN:
            vt, cpp = PLAIN[name]
            return (vt, None), cpp
        if name in BASE_TYPES:
            return (VT_DISPATCH if name == 'IDispatch' else VT_UNKNOWN, None), name
        if name not in self.known:
            self.fail(f'unknown type {name}')
        return (VT_USERDEFINED, self.reference(name)), name

    def reference(self, name):
        for number, listed in enumerate(self.listed):
            if listed.name == name:
                return number
        if name in BASE_TYPES:
            return BASE_LIBRARY | BASE_TYPES.index(name)
        made = self.known.get(name)
        if made and made.kind == INTERFACE and self.described:  # Of an imported file.
            made.is_imported = True
            made.implements = [(self.reference(made.base), 0)]
            self.listed.append(made)
            return len(self.listed) - 1
        self.fail(f'{name} is not in the library')

    def constant(self, value, described):
        if isinstance(value, str):
            return VT_BSTR, value
        vt = described[0]
        return (vt if vt not in (VT_USERDEFINED, 12, 22) else VT_I4), value

    def parameter(self):
        attributes = self.attributes()
        described, cpp = self.type()
        name = self.take()
        flags = sum(f for a, f in PARAMETER_FLAGS.items() if a in attributes)
        default = None
        if 'defaultvalue' in attributes:
            flags |= PARAMETER_FLAGS['optional']
            default = self.constant(attributes['defaultvalue'], described)
        return Parameter(name, described, cpp, flags, default)

    def function(self, owner):
        attributes = self.attributes()
        described, cpp = self.type()
        name = self.take()
        self.take('(')
        parameters = []
        while not self.took(')'):
            if self.peek() == 'void' and self.tokens[self.at + 1] == ')':
                self.take()
                continue
            parameters.append(self.parameter())
            self.took(',')
        self.take(';')
        kind, prefix = next((v for k, v in INVOKE.items() if k in attributes), (1, ''))
        flags = sum(f for a, f in FUNCTION_FLAGS.items() if a in attributes)
        number = 0x60000000 | owner.depth << 16 | len(owner.functions)
        return Function(attributes.get('id', number), name, attributes.get('helpstring'), kind,
                        flags, described, cpp, prefix + name, parameters)

    def declare(self, kind, name, attributes):
        """Makes the type, and lists it if the library is being read."""
        flags = 0
        for attribute, flag in TYPE_FLAGS.items():
            flags |= flag if attribute in attributes else 0
        made = Type(kind, name, attributes.get('uuid'), attributes.get('helpstring'), flags,
                    attributes.get('version', (0, 0)))
        self.known[name] = made
        if self.described:
            self.listed.append(made)
        return made

    def interface(self, attributes):
        name = self.take()
        if self.took(';'):
            if self.described and name in self.known:
                listed = self.known[name]
                self.listed.append(listed)
                if listed.base:
                    listed.implements = [(self.reference(listed.base), 0)]
            return
        made = self.declare(INTERFACE, name, attributes)
        if self.took(':'):
            made.base = self.take()
            base = self.known.get(made.base) or self.fail(f'unknown base {made.base}')
            made.depth = base.depth + 1
            made.flags |= base.flags & 0x1000 | (0x1000 if made.base == 'IDispatch' else 0)
            if self.described:
                made.implements = [(self.reference(made.base), 0)]
        self.take('{')
        while not self.took('}'):
            made.functions.append(self.function(made))
        self.took(';')

    def dispinterface(self, attributes):
        made = self.declare(DISPATCH, self.take(), attributes)
        made.flags |= 0x1000
        made.implements = [(self.reference('IDispatch'), 0)]
        self.take('{')
        for part, read in (('properties', self.property), ('methods', self.function)):
            if self.took(part):
                self.take(':')
                while self.peek() not in ('methods', '}'):
                    (made.variables if part == 'properties' else made.functions).append(read(made))
        self.take('}')
        self.took(';')

    def property(self, _):
        attributes = self.attributes()
        described, _ = self.type()
        name = self.take()
        self.take(';')
        return Variable(attributes['id'], name, attributes.get('helpstring'), described,
                        'readonly' in attributes)

    def coclass(self, attributes):
        made = self.declare(COCLASS, self.take(), attributes)
        made.flags |= 0 if 'noncreatable' in attributes else 2
        self.take('{')
        while not self.took('}'):
            implemented = self.attributes()
            if self.take() not in ('interface', 'dispinterface'):
                self.fail('interface expected')
            flags = sum(f for a, f in IMPLEMENTED_FLAGS.items() if a in implemented)
            made.implements.append((self.reference(self.take()), flags))
            self.take(';')
        self.took(';')

    def enumeration(self, attributes):
        tag = self.take() if self.peek() != '{' else ''
        members, value = [], 0
        self.take('{')
        while not self.took('}'):
            own = self.attributes()
            name = self.take()
            value = self.number() if self.took('=') else value
            members.append(Variable(0x40000000 + len(members), name, own.get('helpstring'),
                                    (VT_INT, None), 0, (VT_I4, value)))
            value += 1
            self.took(',')
        name = self.take() if self.peek() != ';' else tag
        self.take(';')
        self.declare(ENUM, name, attributes).variables = members

    def typedef(self):
        attributes = self.attributes()
        if self.took('enum'):
            return self.enumeration(attributes)
        if self.peek() in ('struct', 'union'):  # C has these; they are no part of a library
            while self.take() != '}':
                pass
            self.take()
            return self.take(';')
        self.attributes()
        start = self.at
        while self.tokens[self.at + 1] != ';':
            self.at += 1
        end, name = self.at, self.take()
        self.take(';')
        if name in PLAIN or not self.described:
            return None
        self.at = start
        described, _ = self.type()
        if self.at != end:
            self.fail('a type expected')
        self.at = end + 2
        self.declare(ALIAS, name, attributes).alias = described
        return None

    def read(self):
        while self.peek() and self.peek() != '}':
            attributes = self.attributes()
            word = self.take()
            if word == 'import':
                Reader(self.find(self.string()), self.folders, self.listed, self.known).read()
                self.take(';')
            elif word == 'importlib':
                self.take('(')
                self.string()
                self.take(')')
                self.take(';')
            elif word == 'library':
                self.described = Library(self.take(), attributes['uuid'],
                                       attributes.get('helpstring'),
                                       attributes.get('version', (0, 0)),
                                       attributes.get('lcid', 0))
                self.described.flags |= sum(f for a, f in LIBRARY_FLAGS.items() if a in attributes)
                self.described.types = self.listed
                self.take('{')
                self.read()
                self.take('}')
                self.took(';')
            elif word in ('interface', 'dispinterface', 'coclass'):
                getattr(self, word)(attributes)
            elif word == 'enum':
                self.enumeration(attributes)
            elif word == 'typedef':
                self.typedef()
            else:
                self.fail(f'unexpected {word}')
        return self.described

    def find(self, name):
        for folder in [os.path.dirname(self.path), *self.folders]:
            path = os.path.join(folder, name)
            if os.path.exists(path):
                return path
        self.fail(f'no file {name}')


def read_library(path, folders):
    library = Reader(path, folders).read()
    if not library:
        raise IdlError(f'{path}: no library in it')
    return library
