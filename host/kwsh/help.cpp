// What the commands do and how they are called, in short.
#include "host/kwsh/help.h"

#include <algorithm>
#include <array>

#include "host/kwsh/failure.h"
#include "host/kwsh/host_functions.h"

namespace korvex::host {
namespace {

struct HelpEntry {
    std::string_view name;
    std::string_view summary;
    /// Forms and explanations, each line indented by two; empty when the summary says all.
    std::string_view forms;
};

constexpr std::array fileCommands = {
    HelpEntry{"copyfile", "copies a file, a folder, or everything that a wildcard matches",
              R"(  copyfile(source)                        into the current folder
  copyfile(source, destination)           destination: a new name, or a folder to copy into
  copyfile(..., 'f')                      also over what is write-protected; 'writable' is the same
  copyfile(..., 'copylinkbehavior', b)    links: 'osdefault', 'preserve' or 'resolve'
  [status, text, id] = copyfile(...)      tells of a failure instead of raising it
)"},
    HelpEntry{"movefile", "moves or renames a file, a folder, or everything that a wildcard matches",
              R"(  movefile(source)                        into the current folder
  movefile(source, destination)           destination: a new name, or a folder to move into
  movefile(..., 'f')                      also over what is write-protected; 'writable' is the same
  movefile(..., 'movelinkbehavior', b)    links: 'preserve' or 'resolve'
  [status, text, id] = movefile(...)      tells of a failure instead of raising it
)"},
    HelpEntry{"mkdir", "makes a folder, with the folders above it that are missing",
              R"(  mkdir(folder)
  mkdir(parent, folder)                   inside of another folder
  [status, text, id] = mkdir(...)         tells of a failure instead of raising it
)"},
    HelpEntry{"rmdir", "removes a folder",
              R"(  rmdir(folder)                           an empty folder; wildcards in its name
  rmdir(folder, 's')                      with everything in it
  rmdir(..., 'resolvesymboliclinks', t)   true: the folder that a link leads to
  [status, text, id] = rmdir(...)         tells of a failure instead of raising it
)"},
    HelpEntry{
        "delete", "deletes files, or moves them to the recycle bin",
        R"(  delete(name, ...)                       files; * in the last part of a name matches any text
  delete(..., 'resolvesymboliclinks', t)  true: what a link leads to
  See recycle for the recycle bin. Folders are left to rmdir.
)"},
    HelpEntry{"recycle", "tells or sets whether delete uses the recycle bin",
              R"(  state = recycle                         'on' or 'off'
  earlier = recycle('on')                 delete moves local files to the recycle bin
  earlier = recycle('off')                delete removes them for good
)"},
    HelpEntry{"dir", "lists what a folder, a name or a pattern names",
              R"(  dir                                     the current folder
  dir(name)                               a folder, a file, or a pattern with * ? and ** for any folders
  entries = dir(...)                      fields name, folder, date, bytes, isdir, datenum
)"},
    HelpEntry{"what", "lists the environment's own files in a folder, by kind",
              R"(  what                                    the current folder
  what(folder, ...)                       folders by path, or by a part of one on the search path
  what(..., '-casesensitive')             or '-caseinsensitive': how names are compared
  kinds = what(...)                       one element for each folder that was found
)"},
    HelpEntry{"fileattrib", "shows or changes the attributes of files and folders",
              R"(  fileattrib(name)                        shows them
  [status, attributes, id] = fileattrib(name)
  fileattrib(name, '+w -h')               sets (+) or clears (-) w, a, h, s: write, archive, hidden, system
  fileattrib(name, mode, '', 's')         the same for everything below a folder
)"},
    HelpEntry{"isfile", "tells whether a file is there",
              R"(  t = isfile(name)
  t = isfile(names)                       an answer for each text of a string or cell array
)"},
    HelpEntry{"isfolder", "tells whether a folder is there",
              R"(  t = isfolder(name)
  t = isfolder(names)                     an answer for each text of a string or cell array
)"},
};

constexpr std::array hostCommandHelp = {
    HelpEntry{"cd", "changes the current folder",
              R"(  cd folder
  cd                                      prints it, as pwd does
)"},
    HelpEntry{"pwd", "prints the current folder",
              R"(  pwd
  folder = pwd
)"},
    HelpEntry{"path", "shows the search path, where functions are looked for",
              R"(  path                                    one folder a line
  folders = path                          a cell column, as addpath takes it
)"},
    HelpEntry{"addpath", "puts folders at the front of the search path",
              R"(  addpath folder ...                      in their order; one that is on it already moves
  addpath(folders)                        a cell array or string array of folders
  The path is kept from one session to the next.
)"},
    HelpEntry{"rmpath", "takes folders off the search path",
              R"(  rmpath folder ...                       be they there or not
  rmpath(folders)                         a cell array or string array of folders
)"},
    HelpEntry{"package", "tells which folders are installed packages",
              R"(  package add folder name                 a warning follows when its contents are changed
  package add folder name editable        one that is meant to be worked on
  package remove name                     its folder stays
  package list                            name and folder, one a line
  lines = package('list')                 a cell column
  package off                             no such warnings, and what leaves packages out, in all sessions, until:
                                          package on
)"},
    HelpEntry{"load", "reads the function of a source file, .k or .klx",
              R"(  load name                               found in the current folder or on the search path
  load folder/name.k
)"},
    HelpEntry{"functions", "shows the source files whose functions were read",
              R"(  functions                               one file a line
  files = functions                       a cell column
)"},
    HelpEntry{"warning", "switches warnings on or off",
              R"(  warning on
  warning off
  warning off KORVEX:MKDIR:DirectoryExists   one of them by its identifier
)"},
    HelpEntry{"lasterr", "shows the last error",
              R"(  lasterr
  [text, id] = lasterr
)"},
    HelpEntry{"lastwarn", "shows the last warning",
              R"(  lastwarn
  [text, id] = lastwarn
)"},
    HelpEntry{"who", "lists the variables", ""},
    HelpEntry{"clear", "forgets variables",
              R"(  clear                                   all of them
  clear name ...
)"},
    HelpEntry{"help", "shows what there is, or how one command is called",
              R"(  help
  help copyfile
)"},
    HelpEntry{"exit", "ends the session; quit is the same", ""},
    HelpEntry{"quit", "ends the session; exit is the same", ""},
};

constexpr std::string_view statementHelp =
    R"(Statements: copyfile('a', 'b') or copyfile a b; results as in [s, m] = mkdir('d'); ; behind a statement
shows nothing; % begins a comment; ... continues a line; !ls runs a command of the system's shell.
)";

std::string lineOf(std::string_view name, std::string_view text, std::size_t width) {
    std::string line = "  " + std::string(name);
    if (line.size() < width) line.append(width - line.size(), ' ');
    return line + ' ' + std::string(text) + '\n';
}

template <class Entries>
void appendLines(std::string& text, const Entries& entries) {
    for (const HelpEntry& entry : entries)
        text += lineOf(entry.name, entry.summary, 13);
}

const HelpEntry* findEntry(std::string_view name) {
    const auto isIt = [name](const HelpEntry& entry) { return entry.name == name; };
    if (const auto found = std::ranges::find_if(fileCommands, isIt); found != fileCommands.end())
        return &*found;
    const auto found = std::ranges::find_if(hostCommandHelp, isIt);
    return found == hostCommandHelp.end() ? nullptr : &*found;
}

}  // namespace

std::string helpOverview() {
    std::string text = "Files and folders (more with: help NAME)\n";
    appendLines(text, fileCommands);
    text += "The session\n";
    appendLines(text, hostCommandHelp);
    text += "Functions\n";
    for (const HostFunction& function : hostFunctions())
        text += lineOf(function.form, function.meaning, 21);
    return text + std::string(statementHelp);
}

std::string helpOf(std::string_view name) {
    if (const HelpEntry* entry = findEntry(name)) {
        return std::string(entry->name) + ": " + std::string(entry->summary) + ".\n" +
               std::string(entry->forms);
    }
    if (const HostFunction* function = findHostFunction(name)) {
        return std::string(function->form) + ": " + std::string(function->meaning) + ".\n";
    }
    throw HostError("noHelp",
                    u"There is no command or function '" + widen(name) + u"'; 'help' lists them all.");
}

}  // namespace korvex::host
