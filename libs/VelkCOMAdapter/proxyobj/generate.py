#!/usr/bin/env python3
"""Writes the typed clients of script objects from their list.

generate.py sources LIST                 the names of the files that clients writes
generate.py clients LIST FOLDER          a header per class, a source file per group
generate.py fixed LIST FILE              what of the list must stay, for tests
generate.py calls LIST FILE              calls of every member function, for tests

The list's own head tells its format.
"""
import pathlib
import re
import sys

RESULTS = {
    "int": "int",
    "bool": "bool",
    "double": "double",
    "text": "mzComStringC",
    "value": "mzComVariantC",
    "object": "mzComPtrT<mzIUnknown>",
}
PARAMETERS = RESULTS | {"chars": "char const*"}
BY_VALUE = {"int", "bool", "double", "chars"}
OUT_TYPES = {"int", "bool", "double", "text", "value"}
KINDS = {"get": "mzCallPropertyGet", "put": "mzCallPropertyPut", "method": "mzCallMethod"}
# Names that C++ or the headers of Windows have taken.
RESERVED = {"delete", "new", "union", "register", "operator", "default", "class", "namespace",
            "near", "far"}
WARNING = "// Written by generate.py from clients.list: change those.\n"

CLASS = re.compile(r'class (\w+)(?: : (\w+))?(?: "([^"]+)")?')
MEMBER = re.compile(
    r"(given|chosen)\s+(get|put|method|constant)\s+(\w+)(\(.*\))?(?: -> (\w+))?")
PARAMETER = re.compile(r"(out )?(\w+) (\w+)")


class Parameter:
    def __init__(self, text, fail):
        match = PARAMETER.fullmatch(text.strip())
        if not match:
            fail(f"no parameter: '{text.strip()}'")
        self.out = bool(match[1])
        self.type = match[2]
        self.name = match[3] + "_" if match[3] in RESERVED else match[3]


class Member:
    def __init__(self, match, line, fail):
        self.mark, self.kind, self.name, parameters, self.result = match.groups()
        self.line = line
        inner = (parameters or "()")[1:-1].strip()
        self.parameters = [Parameter(text, fail) for text in inner.split(",")] if inner else []
        needs_list = self.kind in ("put", "method")
        if needs_list != (parameters is not None):
            fail("put and method have a list of parameters, get and constant have none")
        if self.kind == "put" and (self.result or not self.parameters):
            fail("a put has a value and no result")
        if self.kind in ("get", "constant") and not self.result:
            fail("a get and a constant have a result")
        if self.kind == "constant" and self.result not in ("int", "text"):
            fail("a constant is an int or a text")

    @property
    def function(self):
        """The name of the member function: puts are setName."""
        if self.kind == "put":
            return "set" + self.name[0].upper() + self.name[1:]
        return self.name + "_" if self.name in RESERVED else self.name

    @property
    def signature(self):
        return self.function, tuple(parameter.type for parameter in self.parameters)


class Client:
    def __init__(self, match, group):
        self.name, self.base, self.script_name = match.groups()
        self.group = group
        self.members = []

    def types(self):
        """The other classes that the declarations name."""
        named = [parameter.type for member in self.members for parameter in member.parameters]
        named += [member.result for member in self.members if member.result]
        return sorted({name for name in named if name not in PARAMETERS} - {self.name, self.base})


def read_list(path):
    clients, group = {}, None
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        def fail(reason, number=number):
            sys.exit(f"{path}:{number}: {reason}")

        text = line.split("#")[0].strip()
        if not text:
            continue
        if text.startswith("group "):
            group = text[6:].strip()
        elif match := CLASS.fullmatch(text):
            if group is None or match[1] in clients:
                fail("a class belongs to a group, and is listed once")
            current = clients[match[1]] = Client(match, group)
        elif match := MEMBER.fullmatch(text):
            if not clients:
                fail("a member belongs to a class")
            current.members.append(Member(match, number, fail))
        else:
            fail("neither group, class nor member")
    check(path, clients)
    return clients


def bases_of(client, clients):
    chain = []
    while client.base:
        client = clients[client.base]
        chain.append(client)
    return chain


def check(path, clients):
    """What the reading of a single line cannot see."""
    for client in clients.values():
        if client.base and client.base not in clients:
            sys.exit(f"{path}: the base {client.base} of {client.name} is not listed")
    for client in clients.values():
        inherited = {m.function for base in bases_of(client, clients) for m in base.members}
        seen = set()
        for member in client.members:
            where = f"{path}:{member.line}: {client.name}.{member.name}"
            if member.signature in seen:
                sys.exit(f"{where} is there already, with the same parameters")
            if member.function in inherited:
                sys.exit(f"{where} would hide a member function of a base")
            seen.add(member.signature)
            for parameter in member.parameters:
                if parameter.out and parameter.type not in OUT_TYPES:
                    sys.exit(f"{where}: an out parameter of type {parameter.type}")
                if parameter.type not in PARAMETERS and parameter.type not in clients:
                    sys.exit(f"{where}: unknown type {parameter.type}")
            if member.result and member.result not in RESULTS and member.result not in clients:
                sys.exit(f"{where}: unknown type {member.result}")


def result_type(name):
    # Qualified, because a member function may have the name of a class.
    return RESULTS.get(name) or f"proxyobj::{name}" if name else "void"


def parameter_text(parameter):
    cpp = PARAMETERS.get(parameter.type) or f"proxyobj::{parameter.type}"
    if parameter.out:
        return f"{cpp}& {parameter.name}"
    if parameter.type in BY_VALUE:
        return f"{cpp} {parameter.name}"
    return f"{cpp} const& {parameter.name}"


def parameter_list(member):
    return ", ".join(parameter_text(parameter) for parameter in member.parameters)


def declaration(member):
    start = "static " if member.kind == "constant" else ""
    end = "" if member.kind == "constant" else " const"
    return (f"    {start}{result_type(member.result)} {member.function}"
            f"({parameter_list(member)}){end};\n")


DOCUMENTATION = {
    "get": "Properties of the object.",
    "put": "Writes of properties.",
    "method": "Methods.",
    "constant": "Constants of the class; each read asks the script manager.",
}


def members_text(client):
    text = ""
    for kind, title in DOCUMENTATION.items():
        members = [member for member in client.members if member.kind == kind]
        if members:
            text += f"\n    // {title}\n" + "".join(declaration(member) for member in members)
    return text


def special_members(client, clients):
    """Every class in the chain sets the object of the shared base."""
    name = client.name
    def constructor(parameter, value):
        return f"    explicit {name}({parameter}) : ScriptingBase({value}) {{}}\n"

    text = f"    {name}() = default;\n"
    text += constructor("mzIDispatchC const& object", "object")
    text += constructor("mzComPtrC const& object", "mzIDispatchC(object)")
    text += constructor("mzIUnknown* object", "mzIDispatchC(object)")
    if client.script_name:
        text += f'    /// Creates a new object "{client.script_name}"; unbound when that fails.\n'
        text += constructor("CreateNew", f'newScriptObject("{client.script_name}")')
    return text


def header_text(client, clients):
    base = f"public {client.base}" if client.base else "public virtual ScriptingBase"
    stands_for = f'"{client.script_name}"' if client.script_name else "an object of this class"
    forward = "".join(f"class {name};\n" for name in client.types())
    include = f'#include "proxyobj/{client.base or "scripting_base"}.h"\n'
    return (f"{WARNING}#pragma once\n\n{include}\n#include \"host/com_string.h\"\n"
            f"#include \"host/variant.h\"\n\nnamespace scripting::proxyobj {{\n\n"
            f"{forward}{chr(10) if forward else ''}"
            f"/// Typed client of {stands_for}; see `ScriptingBase`.\n"
            f"class {client.name} : {base} {{\n  public:\n"
            f"{special_members(client, clients)}{members_text(client)}}};\n\n"
            f"}}  // namespace scripting::proxyobj\n")


def sent(parameter):
    return f"OutParameter({parameter.name})" if parameter.out else parameter.name


def definition(client, member):
    result = result_type(member.result)
    head = f"{result} {client.name}::{member.function}({parameter_list(member)})"
    if member.kind == "constant":
        return (f"{head} {{\n    return read<{result}>(classConstant("
                f'"proxyobj.{client.name.lower()}", "{member.name}"));\n}}\n')
    arguments = "".join(f", {sent(parameter)}" for parameter in member.parameters)
    start = "return " if member.result else ""
    return (f"{head} const {{\n    {start}callMember<{result}>(scriptObject(), "
            f'"{member.name}", {KINDS[member.kind]}{arguments});\n}}\n')


def source_text(group, clients):
    own = [client for client in clients.values() if client.group == group]
    named = {name for client in own for name in client.types()} | {client.name for client in own}
    includes = "".join(f'#include "proxyobj/{name}.h"\n' for name in sorted(named))
    bodies = "\n".join(definition(client, member) for client in own for member in client.members)
    return (f'{WARNING}#include "proxyobj/client_call.h"\n{includes}\n'
            f"namespace scripting::proxyobj {{\n\nusing detail::callMember;\n"
            f"using detail::classConstant;\nusing detail::OutParameter;\nusing detail::read;\n\n"
            f"{bodies}\n}}  // namespace scripting::proxyobj\n")


def groups_of(clients):
    return list(dict.fromkeys(client.group for client in clients.values()))


def files_of(clients):
    return ([f"proxyobj/{name}.h" for name in clients] +
            [f"proxyobj/{group}_clients.cpp" for group in groups_of(clients)])


def write(path, text):
    """Leaves a file alone that is right already, so that nothing is compiled for it."""
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_text() != text:
        path.write_text(text)


def write_clients(clients, folder):
    for client in clients.values():
        write(f"{folder}/proxyobj/{client.name}.h", header_text(client, clients))
    for group in groups_of(clients):
        write(f"{folder}/proxyobj/{group}_clients.cpp", source_text(group, clients))


def fixed_text(clients):
    """The classes and how many members they have, and the members that are given."""
    text = ""
    for client in clients.values():
        outs = sum(any(p.out for p in member.parameters) for member in client.members)
        text += (f"class {client.name}{f' : {client.base}' if client.base else ''}"
                 f"{f' {chr(34)}{client.script_name}{chr(34)}' if client.script_name else ''}"
                 f", {len(client.members)} members{f', {outs} with out' if outs else ''}\n")
        text += "".join(sorted(f"    {member.kind} {member.name} {len(member.parameters)}\n"
                               for member in client.members if member.mark == "given"))
    return text


SAMPLES = {
    "int": "7",
    "bool": "true",
    "double": "2.5",
    "text": 'mzComStringC("text")',
    "chars": '"text"',
    "value": "mzComVariantC(7)",
    "object": "mzComPtrT<mzIUnknown>(sampleObject())",
}


def call_of(client, member):
    setup, arguments = "", []
    for number, parameter in enumerate(member.parameters):
        sample = SAMPLES.get(parameter.type) or f"{parameter.type}(sampleObject())"
        if parameter.out:
            setup += f"        {PARAMETERS[parameter.type]} out{number}{{}};\n"
            sample = f"out{number}"
        arguments.append(sample)
    call = f"client.{member.function}({', '.join(arguments)})"
    left = "".join(f"        observer.left(out{number});\n"
                   for number, parameter in enumerate(member.parameters) if parameter.out)
    use = f"observer.returned({call});" if member.result else f"{call};"
    return (f"    {{\n{setup}        observer.expect({{\"{client.name}\", \"{member.name}\", "
            f"{KINDS[member.kind]}, {len(arguments)}}});\n        {use}\n{left}    }}\n")


def calls_text(clients):
    includes = "".join(f'#include "proxyobj/{name}.h"\n' for name in sorted(clients))
    text = (f'{WARNING}#include "proxyobj/every_call.h"\n\n{includes}\nnamespace velk::test {{\n\n'
            "namespace {\n\nusing namespace scripting::proxyobj;\n\n")
    for client in clients.values():
        members = [member for member in client.members if member.kind != "constant"]
        if members:
            text += (f"void callsOf_{client.name}(CallObserver& observer, mzIUnknown* object) {{\n"
                     f"    {client.name} const client(object);\n"
                     f"{''.join(call_of(client, member) for member in members)}}}\n\n")
    text += "}  // namespace\n\nvoid callEveryMember(CallObserver& observer, mzIUnknown* object) {\n"
    for client in clients.values():
        if any(member.kind != "constant" for member in client.members):
            text += f"    callsOf_{client.name}(observer, object);\n"
    return text + "}\n\n}  // namespace velk::test\n"


def main(arguments):
    commands = {
        "sources": (1, lambda clients: print(";".join(files_of(clients)), end="")),
        "clients": (2, write_clients),
        "fixed": (2, lambda clients, file: write(file, fixed_text(clients))),
        "calls": (2, lambda clients, file: write(file, calls_text(clients))),
    }
    if not arguments or arguments[0] not in commands:
        sys.exit(__doc__)
    count, run = commands[arguments[0]]
    if len(arguments) != count + 1:
        sys.exit(__doc__)
    run(read_list(arguments[1]), *arguments[2:])


main(sys.argv[1:])
