// The calls and their steps.
#include "tests/unit/filemanip/copy_move/failure_scenarios.h"

#include <ostream>
#include <utility>

#include "runtime/text/encoding.h"

namespace korvex::filemanip::tests {

namespace {

using storage::Operation;
using Steps = std::vector<Step>;
using When = Step::When;

Step ask(const std::u16string& location) { return {Operation::existence, location, Handler::run}; }
Step askForCurrentFolder(const std::u16string& location) {
    return {Operation::existence, location, Handler::currentFolder};
}
Step judge(const std::u16string& target) {
    return {Operation::isWritable, target, Handler::nobody, When::unforced};
}
Step list(const std::u16string& folder) { return {Operation::list, folder, Handler::run}; }
Step makeParent(const std::u16string& folder) {
    return {Operation::createFolderRecursive, folder, Handler::missingParent};
}
Step makeFolder(const std::u16string& folder, Handler handler) {
    return {Operation::createFolder, folder, handler};
}

Steps operator+(Steps first, const Steps& then) {
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

/// The calls of one transfer of a file or a folder.
class Transfers {
public:
    explicit Transfers(bool isCopy) : isCopy_(isCopy) {}

    Steps file(const std::u16string& source, const std::u16string& target) const {
        return transfer(isCopy_ ? Operation::copyFile : Operation::moveFile, source, target);
    }
    Steps folder(const std::u16string& source, const std::u16string& target, bool isRefused = false) const {
        Steps steps = transfer(isCopy_ ? Operation::copyFolder : Operation::moveFolder, source, target);
        steps.back().isRefused = isRefused;
        return steps;
    }

private:
    Steps transfer(Operation operation, const std::u16string& source, const std::u16string& target) const {
        Steps steps;
        if (operation == Operation::moveFile)
            steps.push_back({Operation::extendedExistence, target, Handler::nobody, When::forced});
        steps.push_back({Operation::setWritable, target, Handler::nobody, When::forced});
        if (!isCopy_) {
            steps.push_back({Operation::isWritable, source, Handler::nobody, When::forced});
            steps.push_back({Operation::extendedExistence, source, Handler::nobody, When::forced});
            steps.push_back({Operation::setWritable, source, Handler::nobody, When::forced});
        }
        steps.push_back({operation, source, Handler::transfer, When::always, target});
        return steps;
    }

    bool isCopy_;
};

void addFileScenarios(std::vector<Scenario>& scenarios, const Command& command) {
    const Transfers transfers(command.isCopy);
    scenarios.push_back({"FileToANewName", command, u"/s/a", u"/d/n",
                         Steps{ask(u"/s/a"), ask(u"/d/n"), ask(u"/d")} + transfers.file(u"/s/a", u"/d/n")});
    scenarios.push_back({"FileOntoAFile", command, u"/s/a", u"/e/a",
                         Steps{ask(u"/s/a"), ask(u"/e/a"), judge(u"/e/a")} + transfers.file(u"/s/a", u"/e/a"),
                         u"/e/a"});
    scenarios.push_back({"FileIntoAFolder", command, u"/s/a", u"/d",
                         Steps{ask(u"/s/a"), ask(u"/d"), judge(u"/d/a")} + transfers.file(u"/s/a", u"/d/a")});
}

void addFolderScenarios(std::vector<Scenario>& scenarios, const Command& command) {
    const Transfers transfers(command.isCopy);
    const Step here = askForCurrentFolder(u"/here");
    scenarios.push_back(
        {"FolderToANewName", command, u"/s", u"/d/n",
         Steps{ask(u"/s"), ask(u"/d/n"), ask(u"/d"), here} + transfers.folder(u"/s", u"/d/n")});
    scenarios.push_back({"FolderBelowAMissingFolder", command, u"/s", u"/x/y/n",
                         Steps{ask(u"/s"), ask(u"/x/y/n"), ask(u"/x/y"), makeParent(u"/x/y"), here} +
                             transfers.folder(u"/s", u"/x/y/n")});
    scenarios.push_back(
        {"FolderOntoAFolder", command, u"/s", u"/e",
         Steps{ask(u"/s"), ask(u"/e"), here} + transfers.folder(u"/s", command.isCopy ? u"/e" : u"/e/s")});
}

void addMatchScenarios(std::vector<Scenario>& scenarios, const Command& command) {
    const Transfers transfers(command.isCopy);
    const auto matchesInto = [&](const std::u16string& folder) {
        return Steps{judge(folder + u"/a"), judge(folder + u"/b")} + transfers.file(u"/t/a", folder + u"/a") +
               transfers.file(u"/t/b", folder + u"/b");
    };
    scenarios.push_back({"MatchesIntoAFolder", command, u"/t/*", u"/d",
                         Steps{ask(u"/t/*"), ask(u"/d"), list(u"/t")} + matchesInto(u"/d")});
    scenarios.push_back(
        {"MatchesIntoANewFolder", command, u"/t/*", u"/d/n",
         Steps{ask(u"/t/*"), ask(u"/d/n"), ask(u"/d"), list(u"/t"), makeFolder(u"/d/n", Handler::newFolder)} +
             matchesInto(u"/d/n")});
    scenarios.push_back({"MatchesBelowAMissingFolder", command, u"/t/*", u"/x/y/n",
                         Steps{ask(u"/t/*"), ask(u"/x/y/n"), ask(u"/x/y"), makeParent(u"/x/y"), list(u"/t"),
                               makeFolder(u"/x/y/n", Handler::newFolder)} +
                             matchesInto(u"/x/y/n")});
    scenarios.push_back({.name = "NoMatchBelowAMissingFolder",
                         .command = command,
                         .source = u"/t/none",
                         .destination = u"/x/y/n",
                         .steps = {ask(u"/t/none"),
                                   ask(u"/x/y/n"),
                                   ask(u"/x/y"),
                                   makeParent(u"/x/y"),
                                   list(u"/t"),
                                   {Operation::removeFolder, u"/x/y", Handler::run}},
                         .findsNothing = true});
    scenarios.push_back({.name = "CurrentFolder",
                         .command = command,
                         .source = u"/t",
                         .destination = u"/d/n",
                         .steps = Steps{ask(u"/t"), ask(u"/d/n"), ask(u"/d"), askForCurrentFolder(u"/t"),
                                        makeFolder(u"/d/n", Handler::ownContents), list(u"/t")} +
                                  matchesInto(u"/d/n"),
                         .currentFolder = u"/t",
                         .hasOnlyPaths = true});
    scenarios.push_back({"FolderIntoItself", command, u"/t", u"/t/n",
                         Steps{ask(u"/t"), ask(u"/t/n"), ask(u"/t"), askForCurrentFolder(u"/here"),
                               makeFolder(u"/t/n", Handler::ownContents), list(u"/t"), judge(u"/t/n/a"),
                               judge(u"/t/n/b"), judge(u"/t/n/n")} +
                             transfers.file(u"/t/a", u"/t/n/a") + transfers.file(u"/t/b", u"/t/n/b") +
                             transfers.folder(u"/t/n", u"/t/n/n", true)});
}

std::string keyOf(const std::u16string& path) { return runtime::text::toDisplayBytes(path.substr(1)); }

void copyFolder(Tree& tree, const std::string& source, const std::string& target) {
    const Tree before = tree;
    for (const auto& [key, content] : before) {
        if (key.starts_with(source)) tree[target + key.substr(source.size())] = content;
    }
}

void makeFolders(Tree& tree, const std::string& folder) {
    for (std::size_t end = folder.find('/'); end != std::string::npos; end = folder.find('/', end + 1))
        tree.emplace(folder.substr(0, end + 1), "");
}

void unprotect(Tree& tree, const std::string& key) {
    const auto item = tree.find(key);
    const std::string mark = readOnlyMark;
    if (item != tree.end() && item->second.starts_with(mark)) item->second.erase(0, mark.size());
}

}  // namespace

bool Step::isChange() const {
    switch (operation) {
        case Operation::existence:
        case Operation::isWritable:
        case Operation::list: return false;
        default: return true;
    }
}

bool Step::belongsTo(bool isForced) const {
    return when == When::always || (when == When::forced) == isForced;
}

void PrintTo(const Scenario& scenario, std::ostream* stream) {
    *stream << scenario.command.name << ' ' << scenario.name;
}

std::vector<Scenario> allScenarios() {
    std::vector<Scenario> scenarios;
    for (const Command& command : {copyCommand, moveCommand}) {
        addFileScenarios(scenarios, command);
        addFolderScenarios(scenarios, command);
        addMatchScenarios(scenarios, command);
    }
    return scenarios;
}

Tree startOf(const Scenario& scenario, bool isForced) {
    Tree tree{{"s/", ""},    {"s/a", "A"},  {"s/in/", ""}, {"s/in/c", "C"}, {"t/", ""},
              {"t/a", "TA"}, {"t/b", "TB"}, {"d/", ""},    {"e/", ""},      {"e/a", "old"}};
    if (isForced && !scenario.replaced.empty()) tree[keyOf(scenario.replaced)].insert(0, readOnlyMark);
    return tree;
}

void apply(const Step& step, Tree& tree) {
    const std::string at = keyOf(step.location);
    const std::string to = step.destination.empty() ? "" : keyOf(step.destination);
    switch (step.operation) {
        case Operation::setWritable: return unprotect(tree, at);
        case Operation::copyFile: tree[to] = tree.at(at); return;
        case Operation::moveFile:
            tree[to] = tree.at(at);
            tree.erase(at);
            return;
        case Operation::copyFolder: return copyFolder(tree, at + '/', to + '/');
        case Operation::moveFolder:
            copyFolder(tree, at + '/', to + '/');
            std::erase_if(tree, [&](const auto& item) { return item.first.starts_with(at + '/'); });
            return;
        case Operation::createFolder: tree[at + '/'] = ""; return;
        case Operation::createFolderRecursive: return makeFolders(tree, at + '/');
        case Operation::removeFolder: tree.erase(at + '/'); return;
        default: return;
    }
}

}  // namespace korvex::filemanip::tests
