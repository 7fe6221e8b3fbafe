#!/usr/bin/env python3
"""Makes what bash, zsh and fish complete a program's arguments by, from its own --help.

Usage: make_completions.py PROGRAM FOLDER. Writes NAME.bash, _NAME and NAME.fish of the program NAME into the folder.

What completes a value is what the help says of it: "a|b" offers a and b, DIR folders; where the description names endings of files
(".srt, .vtt"), files with these are offered and folders, for a FILE without any every file, and otherwise nothing. An operand NAME is
one of those that the command lists when it is given none.
"""

import pathlib
import re
import subprocess
import sys


class Argument:
    """An option, with its spellings in `flags`, or an operand, without any. `choices`, `endings` and `kind` say what completes it."""

    def __init__(self, head, text, listed):
        spelt = re.match(r"(?:-{1,2}[\w-]+,? ?)*", head).group()
        self.flags = re.findall(r"-{1,2}[\w-]+", spelt)
        value = head[len(spelt):].split(" ")[0].strip("<>")
        self.value = "" if value in ("REQUIRED", "Excludes:", "Needs:") else value
        self.text = text
        self.is_repeatable = "(repeatable)" in text
        self.choices = self.value.split("|") if "|" in self.value else listed() if head == "NAME" else []
        self.endings = re.findall(r"(?<!\w)\.([a-z]+)\b", text) if self.value else []
        is_file = self.endings or self.value == "FILE"
        self.kind = "choice" if self.choices else "folder" if self.value == "DIR" else "file" if is_file else "nothing"


class Command:
    def __init__(self, program, words, text=""):
        def output(*arguments):
            return subprocess.run([program, *words, *arguments], check=True, stdout=subprocess.PIPE, text=True).stdout

        def listed():
            return [line.split()[0] for line in output().splitlines()]

        self.words, self.text = words, text
        sections = sections_of(output("--help"))
        self.options = [Argument(*entry, listed) for entry in sections.get("Options", [])]
        self.operands = [Argument(*entry, listed) for entry in sections.get("Positionals", []) + sections.get("Arguments", [])]
        self.commands = [Command(program, [*words, head], about) for head, about in sections.get("Subcommands", [])]

    def all(self):
        return [self] + [below for command in self.commands for below in command.all()]


HEAD = re.compile(r"  (-[\w-]+, ?)*\S+( (?!Excludes:|Needs:)\S+)*( (Excludes|Needs): \S+)?")


def sections_of(text):
    """Name of a section -> its entries, each what stands left of the column of descriptions, and the description on one line."""
    column = re.search(r"^ +-h\b.*?  +(?=\S)", text, re.MULTILINE)
    column = column.end() - column.start()
    sections, entries = {}, None
    for line in text.splitlines():
        if re.fullmatch(r"(Positionals|Arguments|Options|Subcommands):", line):
            entries = sections.setdefault(line[:-1], [])
        elif not line.startswith("  "):
            entries = None
        elif entries is not None:
            if not line[:column].strip():
                entries[-1][1] = f"{entries[-1][1]} {line.strip()}".strip()
                continue
            # One that reaches into the column has its description on the next line.
            is_long = len(HEAD.match(line).group()) >= column
            entries.append([line.strip(), ""] if is_long else [line[:column].strip(), line[column:].strip()])
    return sections


def quoted(text):
    return "'" + text.replace("'", r"'\''") + "'"


# ---- bash

BASH = """\
# bash completion for @NAME@, made of its --help.

# Folders, and files with the endings that are given; without any, every file.
_@IDENT@_files() {
    local ending
    compopt -o filenames
    mapfile -t COMPREPLY < <(
        if [ $# -eq 0 ]; then compgen -f -- "$cur"; else compgen -d -- "$cur"; fi
        for ending in "$@"; do compgen -f -X "!*.$ending" -- "$cur"; done
    )
}

_@IDENT@_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
}

_@IDENT@_folders() {
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$cur")
}

_@IDENT@() {
    # An equals sign stands as a word of its own.
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} command= word
    COMPREPLY=()
    if [ "$cur" = = ]; then
        cur=
    elif [ "$prev" = = ]; then
        prev=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case "$command $word" in
            @COMMANDS@) command+=" $word" ;;
        esac
    done
    case "$command $prev" in
@VALUES@
    esac
    case "$command:$cur" in
@REST@
    esac
}
complete -F _@IDENT@ @NAME@
"""


def bash(name, root):
    def action(kind, choices, endings):
        return {"choice": f"_@IDENT@_words {quoted(' '.join(choices))}", "folder": "_@IDENT@_folders", "nothing": "",
                "file": " ".join(["_@IDENT@_files", *endings])}[kind]

    values, rest = [], []
    for command in root.all():
        place = "".join(" " + word for word in command.words)
        for option in (option for option in command.options if option.value):
            spellings = " | ".join(f'"{place} {flag}"' for flag in option.flags)
            act = action(option.kind, option.choices, option.endings)
            values.append(f"        {spellings}) {act + '; ' if act else ''}return ;;")
        flags = " ".join(flag for option in command.options for flag in option.flags)
        rest.append(f'        "{place}:-"*) _@IDENT@_words {quoted(flags)} ;;')
        # Which operand the cursor is at is not told apart: choices go before files, files before folders.
        kinds = {operand.kind for operand in command.operands} | ({"choice"} if command.commands else set())
        if kinds:
            choices = [below.words[-1] for below in command.commands] + [c for operand in command.operands for c in operand.choices]
            endings = dict.fromkeys(ending for operand in command.operands for ending in operand.endings)
            rest.append(f'        "{place}:"*) {action(min(kinds), choices, endings)} ;;')
    paths = " | ".join(f'" {" ".join(command.words)}"' for command in root.all() if command.words) or '""'
    return BASH.replace("@COMMANDS@", paths).replace("@VALUES@", "\n".join(values)).replace("@REST@", "\n".join(rest))


# ---- zsh

def zsh(name, root):
    def plain(text):
        return re.sub(r"([\[\]:\\])", r"\\\1", text).replace("'", r"'\''")

    def action(argument):
        globs = "|".join(argument.endings)
        return {"choice": f"({' '.join(argument.choices)})", "folder": "_files -/", "nothing": " ",
                "file": f'_files -g "*.({globs})"' if globs else "_files"}[argument.kind]

    def form(option):
        excluded = "*" if option.is_repeatable else f"({' '.join(option.flags)})"
        suffixes = {flag: ("=" if flag.startswith("--") else "+") if option.value else "" for flag in option.flags}
        value = f":{plain(option.value)}:{action(option)}" if option.value else ""
        return " ".join(f"'{excluded}{flag}{suffixes[flag]}[{plain(option.text)}]{value}'" for flag in option.flags)

    lines = [f"#compdef {name}", f"# zsh completion for {name}, made of its --help."]
    for command in root.all():
        forms = [form(option) for option in command.options]
        function = "_".join(["_@IDENT@", *command.words])
        lines += ["", f"{function}() {{"]
        if command.commands:
            forms += ["'1: :->command'", "'*:: :->arguments'"]
            lines += ['  local curcontext="$curcontext" context state state_descr line', "  typeset -A opt_args",
                      "  local -a commands=(", *(f"    '{below.words[-1]}:{plain(below.text)}'" for below in command.commands), "  )"]
        else:
            last = len(command.operands) - 1
            forms += [f"'{'*' if i == last else i + 1}:{plain(operand.value)}:{action(operand)}'"
                      for i, operand in enumerate(command.operands)]
        lines += [f"  _arguments {'-C ' if command.commands else ''}-S \\", " \\\n".join("    " + each for each in forms)]
        if command.commands:
            lines += ["  case $state in", "    command) _describe command commands ;;", "    arguments)", "      case $line[1] in",
                      *(f"        {below.words[-1]}) {'_'.join(['_@IDENT@', *below.words])} ;;" for below in command.commands),
                      "      esac ;;", "  esac"]
        lines.append("}")
    return "\n".join([*lines, "", '_@IDENT@ "$@"', ""])


# ---- fish

FISH = r"""# fish completion for @NAME@, made of its --help.

function __@IDENT@_files --description 'Folders, and files with the endings that are given'
    set -l endings (string join '|' $argv)
    complete -C '__fish_command_without_completions '(commandline -ct) | string match -r -- '^.*(?:/|\.(?:'$endings'))$'
end

complete -c @NAME@ -f
"""


def fish(name, root):
    def escaped(text):
        return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"

    def values(argument, is_operand):
        if argument.kind == "file" and not argument.endings:
            return " -F" if is_operand else " -r -F"
        offered = {"choice": " ".join(argument.choices), "folder": "(__fish_complete_directories)", "nothing": "",
                   "file": f"(__@IDENT@_files {' '.join(argument.endings)})"}[argument.kind]
        return ("" if is_operand else " -x") + (f" -a {escaped(offered)}" if offered else "")

    lines = []
    for command in root.all():
        seen = [f"__fish_seen_subcommand_from {word}" for word in command.words]
        below = " ".join(each.words[-1] for each in command.commands)
        if below:
            seen.append(f"not __fish_seen_subcommand_from {below}")
        start = f"complete -c {name}" + (f" -n {escaped('; and '.join(seen))}" if seen else "")
        for each in command.commands:
            lines.append(f"{start} -a {each.words[-1]} -d {escaped(each.text)}")
        for option in command.options:
            flags = "".join(f" -l {flag[2:]}" if flag.startswith("--") else f" -s {flag[1:]}" for flag in option.flags)
            lines.append(f"{start}{flags}{values(option, False) if option.value else ''} -d {escaped(option.text)}")
        lines += [start + values(operand, True) for operand in command.operands if operand.kind != "nothing"]
    return FISH + "\n".join(lines) + "\n"


def main():
    program, folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    name = program.name
    root = Command(program, [])
    for file, make in ((f"{name}.bash", bash), (f"_{name}", zsh), (f"{name}.fish", fish)):
        script = make(name, root).replace("@NAME@", name).replace("@IDENT@", name.replace("-", "_"))
        (folder / file).write_text(script, encoding="utf-8")


if __name__ == "__main__":
    main()
