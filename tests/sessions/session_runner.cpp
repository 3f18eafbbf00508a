// Runs a session file through kwsh and compares what it gives with what the file says.
//
//   session_runner KWSH FILE.session [--update]
//
// The statements run in a scratch folder whose path reads SCRATCH in the session. With --update the file is
// written anew. Exit status 0 when they agree, 1 when not, 2 when the session cannot be run.
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "runtime/process/process.h"
#include "runtime/text/encoding.h"
#include "tests/sessions/session_file.h"
#include "tests/support/scratch_folder.h"

namespace {

using namespace korvex::tests;
namespace process = korvex::runtime::process;

constexpr std::string_view scratchName = "SCRATCH";

std::string quotedForShell(const std::string& word) {
    std::string quoted = "'";
    for (const char unit : word)
        quoted += unit == '\'' ? std::string("'\\''") : std::string(1, unit);
    return quoted + '\'';
}

std::string replaceAll(std::string text, const std::string& from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// What kwsh prints for the script. Raises `std::runtime_error` when it does not end well.
std::string transcriptOf(const std::string& program, const std::string& script) {
    const ScratchFolder scratch;
    const std::string scriptPath = scratch.writeFile("session.k", script).string();
    const std::string workFolder = scratch.makeFolder("work").string();
    const std::string configurationFolder = (scratch.path() / "configuration").string();
    // What is deleted into the recycle bin goes to one of the session's own, never to that of the user.
    const std::string homeFolder = quotedForShell(scratch.makeFolder("home").string());
    std::string command = "HOME=" + homeFolder + " XDG_DATA_HOME=" + homeFolder + "/data LC_ALL=C.UTF-8 no_proxy='*' ";
    command += quotedForShell(program) + " --transcript --columns 80";
    command += " --cd " + quotedForShell(workFolder) + " --config " + quotedForShell(configurationFolder);
    command += ' ' + quotedForShell(scriptPath);

    std::string transcript;
    const int status = process::runShellCommand(korvex::runtime::text::fromBytes(command), scratch.text(),
                                                [&](std::string_view bytes) { transcript += bytes; });
    if (status != 0) {
        throw std::runtime_error("kwsh ended with status " + std::to_string(status) + " after\n" +
                                 transcript);
    }
    return replaceAll(std::move(transcript), workFolder, scratchName);
}

int runSession(const std::string& program, const std::string& file, bool isUpdate) {
    const std::vector<std::string> session =
        linesOf(process::readFile(korvex::runtime::text::fromBytes(file)));
    const std::string transcript = transcriptOf(program, scriptOf(session));
    if (isUpdate) {
        std::ofstream output(file, std::ios::binary);
        if (!(output << transcript << std::flush)) throw std::runtime_error(file + " cannot be written");
        return 0;
    }
    const std::string differing = difference(session, linesOf(transcript));
    if (differing.empty()) return 0;
    std::cout << file << " differs from what kwsh gives\n" << differing;
    return 1;
}

}  // namespace

int main(int count, char* arguments[]) {
    const std::vector<std::string> words = process::programArguments(count, arguments);
    const bool isUpdate = words.size() == 3 && words[2] == "--update";
    if (words.size() != 2 && !isUpdate) {
        std::cerr << "usage: session_runner KWSH FILE.session [--update]\n";
        return 2;
    }
    try {
        return runSession(words[0], words[1], isUpdate);
    } catch (const std::exception& error) {
        std::cerr << words[1] << ": " << error.what() << '\n';
        return 2;
    }
}
