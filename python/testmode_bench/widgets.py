"""The widgets on the unit's screen, found by what they show or by their names."""
from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Iterator

from .errors import BenchError


@dataclass(frozen=True)
class Node:
    """One widget as ui.tree tells it, with its way down from the screen."""

    state: dict[str, Any]
    ancestors: tuple[Node, ...]

    @property
    def name(self) -> str:
        return str(self.state["name"])

    @property
    def text(self) -> str:
        return str(self.state["text"]).strip()

    def is_called(self, name: str) -> bool:
        """By its objectName or its class, as the monitor takes it."""
        of_class = str(self.state["class"])
        return name in (self.name, of_class, of_class.rpartition("::")[2])


def nodes_of(tree: dict[str, Any], ancestors: tuple[Node, ...] = ()) -> Iterator[Node]:
    node = Node(tree, ancestors)
    yield node
    for child in tree["children"]:
        yield from nodes_of(child, (*ancestors, node))


def address_of(node: Node, every: list[Node]) -> str:
    """What the monitor calls this widget and no other."""
    if not node.name:
        raise BenchError(f"the {node.state['class']} that shows {node.text!r} has no objectName")
    namesakes = [other for other in every if other.name == node.name]
    if len(namesakes) == 1:
        return node.name
    for ancestor in reversed(node.ancestors):
        called = ancestor.name or str(ancestor.state["class"])
        if sum(any(above.is_called(called) for above in other.ancestors)
               for other in namesakes) == 1:
            return f"{called}/{node.name}"
    raise BenchError(f"{len(namesakes)} widgets are called {node.name}, and no ancestor tells "
                     "them apart")


def find(tree: dict[str, Any], what: str) -> str | None:
    """Address of the visible widget that shows `what`, or else has it as its objectName.

    None if there is none, BenchError if there are several.
    """
    every = list(nodes_of(tree))
    visible = [node for node in every if node.state["visible"]]
    found = ([node for node in visible if node.text == what and node.name]
             or [node for node in visible if node.name == what])
    if len(found) > 1:
        names = ", ".join(address_of(node, every) for node in found)
        raise BenchError(f"{what!r} may be {names}")
    return address_of(found[0], every) if found else None


def shown_texts(tree: dict[str, Any]) -> list[str]:
    """The words that can be read on the screen."""
    return [node.text for node in nodes_of(tree) if node.state["visible"] and node.text]
