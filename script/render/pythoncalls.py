"""The calls of a bench's schema as a Python module: a typed method each."""
import textwrap

HEAD = '''"""The monitor's calls, a method each. Written by script/render-docs from a schema."""
from __future__ import annotations

from abc import ABC, abstractmethod
from typing import Any, Literal, Union

Json = Any
Result = dict[str, Any]
Address = Union[int, str]
"""A number of 32 bits, or a text such as "0x9C005000"."""


def given(**arguments: Json) -> Result:
    """The arguments that were not left out."""
    return {name: value for name, value in arguments.items() if value is not None}

'''

CLASS = '''

class Calls(ABC):
    """Every call that a bench of this version takes."""

    @abstractmethod
    def call(self, method: str, /, **arguments: Json) -> Result:
        """Makes one call by its name and returns its result."""
'''

TYPES = {
    "text": "str",
    "integer": "int",
    "boolean": "bool",
    "list": "list[Any]",
    "address": "Address",
    "any": "Json",
}
WIDTH = 100


def literal(name, words, explanation):
    listed = textwrap.fill(", ".join(f'"{word}"' for word in words), WIDTH, initial_indent="    ",
                           subsequent_indent="    ", break_on_hyphens=False)
    return f'\n{name} = Literal[\n{listed},\n]\n"""{explanation}"""\n'


def parameter_of(parameter):
    if parameter["optional"]:
        return f"{parameter['name']}: {TYPES[parameter['type']]} | None = None"
    return f"{parameter['name']}: {TYPES[parameter['type']]}"


def folded(start, words, end):
    """The words in one line behind `start` if they fit, else one a line beneath it."""
    line = start + ", ".join(words) + end
    if len(line) <= WIDTH:
        return line
    indent = " " * (len(start) - len(start.lstrip()))
    lines = []
    for word in words:
        lines += textwrap.wrap(word + ",", WIDTH, initial_indent=indent + "    ",
                               subsequent_indent=indent + " " * (5 + word.find("(")),
                               break_long_words=False)
    return "\n".join([start, *lines, indent + end.lstrip()])


def docstring_of(method):
    lines = textwrap.wrap(method["description"] + ".", WIDTH - 11)
    if method["parameters"]:
        lines.append("")
    for parameter in method["parameters"]:
        lines += textwrap.wrap(f"{parameter['name']}: {parameter['description']}", WIDTH - 8,
                               subsequent_indent="    ")
    if len(lines) == 1:
        return f'        """{lines[0]}"""\n'
    body = "\n".join(f"        {line}".rstrip() for line in lines[1:])
    return f'        """{lines[0]}\n{body}\n        """\n'


def method_of(method):
    parameters = sorted(method["parameters"], key=lambda parameter: parameter["optional"])
    signature = folded(f"    def {method['name'].replace('.', '_')}(",
                       ["self", *map(parameter_of, parameters)], ") -> Result:")
    names = {optional: [f"{parameter['name']}={parameter['name']}" for parameter in parameters
                        if parameter["optional"] == optional] for optional in (False, True)}
    words = [f'"{method["name"]}"', *names[False]]
    if names[True]:
        words.append(f"**given({', '.join(names[True])})")
    call = folded("        return self.call(", words, ")")
    return f"\n{signature}\n{docstring_of(method)}{call}\n"


def module_of(schema):
    kinds = [
        ("Event", [event["name"] for event in schema["events"]], "What bench.subscribe takes."),
        ("ErrorClass", [error["class"] for error in schema["errors"]], "Classes of errors."),
        ("FaultKind", schema["faults"], "What a fault may do."),
        ("Step", schema["steps"], "Exchanges of the dialogue that a fault may strike at."),
        ("Phase", schema["phases"], "Where the receiver may stand."),
    ]
    return (HEAD + "".join(literal(*kind) for kind in kinds) + CLASS
            + "".join(method_of(method) for method in schema["methods"]))
