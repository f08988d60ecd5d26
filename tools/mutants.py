"""Ways to break the program: the mutants of its sources, and which of them a run takes."""

import collections
import dataclasses
import random
import re
import sys


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str  # relative to the root
    start: int  # offsets of the replaced characters
    end: int
    new: str
    kind: str

    def key(self):
        return f"{self.file}:{self.start}:{self.end}:{self.kind}:{self.new}"

    def applied(self, text):
        return text[: self.start] + self.new + text[self.end :]

    def described(self, text):
        """One line for the place and the kind, and what it does to the lines there."""
        line = text.count("\n", 0, self.start) + 1
        first = text.rfind("\n", 0, self.start) + 1
        last = text.find("\n", self.end)
        tail = text[self.end : last if last >= 0 else len(text)]
        old = text[first : self.start] + text[self.start : self.end] + tail
        new = text[first : self.start] + self.new + tail
        changes = [f"    - {part.strip()}" for part in old.splitlines()]
        changes += [f"    + {part.strip()}" for part in new.splitlines() if part.strip()]
        return "\n".join([f"{self.file}:{line}: {self.kind}"] + changes)


# What the characters of a source are; the first alternative that fits wins.
LEXEMES = re.compile(
    r'(?P<comment>//[^\n]*|/\*.*?\*/)|(?P<directive>^[ \t]*#[^\n]*)'
    r'|(?P<raw>R"(?P<mark>[^(\s]*)\((?P<body>.*?)\)(?P=mark)")|(?P<text>"(?:[^"\\\n]|\\.)*")'
    r"|(?P<character>'(?:[^'\\\n]|\\.)')",
    re.S | re.M,
)

# Edits of code: name, expression, and what takes the place of its first group.
CODE_EDITS = [
    ("comparison flipped", r"(?<=[\w)\]] )(==)(?= )", ["!="]),
    ("comparison flipped", r"(?<=[\w)\]] )(!=)(?= )", ["=="]),
    ("comparison flipped", r"(?<=[\w)\]] )(<=)(?= )", ["<", ">"]),
    ("comparison flipped", r"(?<=[\w)\]] )(>=)(?= )", [">", "<"]),
    ("comparison flipped", r"(?<=[\w)\]] )(<)(?= [\w(])", ["<=", ">"]),
    ("comparison flipped", r"(?<=[\w)\]] )(>)(?= [\w(])", [">=", "<"]),
    ("and/or swapped", r"(?<= )(&&)(?=\s)", ["||"]),
    ("and/or swapped", r"(?<= )(\|\|)(?=\s)", ["&&"]),
    ("condition dropped", r"(?<= )(&&|\|\|)(?=\s)", [","]),
    ("negation dropped", r"(?<=[\s(])(!)(?=[\w(])", [""]),
    ("truth value changed", r"\b(true)\b", ["false"]),
    ("truth value changed", r"\b(false)\b", ["true"]),
    ("constant changed", r"(?<![\w.'])([0-9]+(?:\.[0-9]+)?)(?![\w.'])", None),
    ("operator changed", r"(?<=[\w)] )(\+)(?= [\w(])", ["-"]),
    ("operator changed", r"(?<=[\w)] )(-)(?= [\w(])", ["+"]),
    ("operator changed", r"(\+\+)(?=\w)", ["--"]),
    ("operator changed", r"(\+=)", ["="]),
    ("quantifier changed", r"\b(any_of)\b", ["none_of", "all_of"]),
    ("quantifier changed", r"\b(none_of)\b", ["any_of"]),
    ("quantifier changed", r"\b(all_of)\b", ["any_of"]),
    ("extreme changed", r"std::(min)\b", ["max"]),
    ("extreme changed", r"std::(max)\b", ["min"]),
    ("end changed", r"\.(front)\(\)", ["back"]),
    ("exit changed", r"\b(break);", ["continue"]),
    ("exit changed", r"\b(continue);", ["break"]),
    ("state changed", r"CallState::(joined|left|unknown)\b", None),
]
SUCCESSORS = {"joined": ["unknown"], "left": ["unknown"], "unknown": ["left"]}

# Edits of the texts in the code: patterns, phrases, names.
TEXT_EDITS = [
    ("pattern edited", r"(\|[^|()]+)(?=[|)])", [""]),
    ("pattern edited", r"(?<=[)\]}])(\?)", [""]),
    ("pattern edited", r"^(\^)", [""]),
    ("pattern edited", r"(\$)$", [""]),
    ("pattern edited", r"\{(?:[0-9]+,)?([0-9]+)\}", None),
    ("pattern edited", r"(?<=[\])])([*+])", ["?"]),
    ("phrase edited", r"([a-zA-Z])(?=[a-zA-Z]*$)", ["q"]),
    ("phrase edited", r"([a-zA-Z])", ["q"]),
    ("phrase edited", r"( )", ["  "]),
    ("phrase edited", r"([.:/?,-])", [""]),
]

STATEMENT = re.compile(
    r"(?!return\b|const\b|auto\b|using\b|static\b|constexpr\b|case\b|break\b|continue\b|else\b)"
    r"(?:if \(.*\) [^{]*|[\w:.\[\]*>-]+(?:\(.*\)| [-+|]?= .*)|(?:\+\+|--)[\w.>-]+);"
)


def codeAndTexts(text):
    """The text with everything but code blanked out, and the spans of its string contents."""
    code = list(text)
    spans = []
    for match in LEXEMES.finditer(text):
        for i in range(match.start(), match.end()):
            if code[i] != "\n":
                code[i] = "\x01"
        if match.group("raw"):
            spans.append(match.span("body"))
        elif match.group("text") and len(match.group("text")) > 2:
            spans.append((match.start() + 1, match.end() - 1))
    return "".join(code), spans


def replacements(old):
    """What may stand in the place of a constant or of a state."""
    if old in SUCCESSORS:
        return SUCCESSORS[old]
    if "." in old:
        return [str(float(old) * 2 + 0.5)]
    return [str(int(old) + 1)] + ([str(int(old) - 1)] if int(old) > 0 else [])


def conditionMutants(file, code):
    """Every plain condition of an `if`, once always true and once always false."""
    for match in re.finditer(r"\bif \(", code):
        depth, end = 1, match.end()
        while depth > 0 and end < len(code):
            depth += {"(": 1, ")": -1}.get(code[end], 0)
            end += 1
        condition = code[match.end() : end - 1]
        # A condition that declares something cannot go without it.
        if ";" in condition or re.match(r"(const |auto |std::)[^=(]* = ", condition):
            continue
        yield Mutant(file, match.end(), end - 1, "false", "condition fixed")
        yield Mutant(file, match.end(), end - 1, "true", "condition fixed")


def statementMutants(file, text, code):
    """Every statement of one line dropped, and every two neighbours swapped."""
    offset, previous = 0, None
    for line, plain in zip(text.splitlines(True), code.splitlines(True)):
        body = plain.strip()
        start = offset + len(line) - len(line.lstrip())
        stop = offset + len(line.rstrip())
        indent = start - offset
        offset += len(line)
        if indent == 0 or not STATEMENT.fullmatch(body):
            previous = None
            continue
        yield Mutant(file, start, stop, "", "statement dropped")
        if previous and previous[2] == indent:
            first, second = text[previous[0] : previous[1]], text[start:stop]
            between = text[previous[1] : start]
            yield Mutant(file, previous[0], stop, second + between + first, "statements swapped")
        previous = (start, stop, indent)


def mutantsOf(file, text):
    """Every way in which this script can break one file."""
    code, spans = codeAndTexts(text)
    found = set()
    for kind, expression, news in CODE_EDITS:
        for match in re.finditer(expression, code):
            for new in news or replacements(match.group(1)):
                found.add(Mutant(file, *match.span(1), new, kind))
    for start, end in spans:
        content = text[start:end]
        for kind, expression, news in TEXT_EDITS:
            # Of single letters and marks one a text says as much as all.
            matches = list(re.finditer(expression, content))
            if kind == "phrase edited":
                matches = matches[len(matches) // 2 :][:1]
            for match in matches:
                for new in news or replacements(match.group(1)):
                    found.add(Mutant(file, start + match.start(1), start + match.end(1), new, kind))
    found.update(conditionMutants(file, code))
    found.update(statementMutants(file, text, code))
    return sorted(found, key=Mutant.key)


def chosenMutants(root, count, seed, only):
    """The mutants of a run: every file has its share, and in a file every kind has its turn."""
    turns = {}
    for path in sorted((root / "main").rglob("*")):
        file = str(path.relative_to(root))
        if path.suffix not in (".h", ".cpp") or (only and only not in file):
            continue
        # Most programs that judge know no desktop.
        if file.startswith("main/platform/") and not (only and "platform/" in only):
            continue
        mutants = mutantsOf(file, path.read_text())
        chance = random.Random(f"{seed}:{file}")
        chance.shuffle(mutants)
        kinds = collections.defaultdict(list)
        for mutant in mutants:
            kinds[mutant.kind].append(mutant)
        order = sorted(kinds)
        chance.shuffle(order)
        inTurn = []
        # Large files get more than small ones, but not in proportion to their tables. Patterns
        # decide so much in so few characters that they get more turns than anything else.
        share = max(3.0, len(mutants) ** 0.5) + len(kinds["pattern edited"]) / 5
        while any(kinds.values()):
            for kind in order:
                for _ in range(4 if kind == "pattern edited" else 1):
                    if kinds[kind]:
                        inTurn.append(kinds[kind].pop())
        if inTurn:
            turns[file] = (inTurn, share)
    if not turns:
        sys.exit("mutate: there is nothing to mutate")
    total = sum(share for _, share in turns.values())
    chosen, spare = [], []
    for mutants, share in turns.values():
        quota = max(1, round(count * share / total))
        chosen += mutants[:quota]
        spare += mutants[quota:]
    random.Random(seed).shuffle(spare)
    random.Random(seed).shuffle(chosen)
    chosen = (chosen + spare)[:count]
    return sorted(chosen, key=Mutant.key)  # file by file, so that builds stay small
