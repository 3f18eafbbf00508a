// A host that links the commands: it makes a folder, copies a file and asks for it, has a failure told in the
// outputs and another one raised. It works in the folder in which it is started.
#include <fstream>
#include <iostream>

#include "command_call.h"
#include "io/filesystem/filemanip/module_entries.h"
#include "platform/user_exceptions.h"
#include "runtime/interpreter/output.h"
#include "runtime/interpreter/warnings.h"
#include "runtime/text/encoding.h"

namespace {

using example::call;
using example::Outputs;
using example::textOf;
using korvex::runtime::text::toDisplayBytes;

/// What the commands print and warn of goes to the standard streams.
void connectStreams() {
    korvex::runtime::interpreter::setOutputReceiver(
        [](std::u16string_view text) { std::cout << toDisplayBytes(text); });
    korvex::runtime::interpreter::setWarningReceiver(
        [](const korvex::runtime::interpreter::Warning& warning) {
            std::cerr << "warning: " << toDisplayBytes(warning.text) << '\n';
        });
}

bool isFile(std::u16string_view name) {
    Outputs answer(1);
    call(bnIsFileFcn, answer, {name});
    return kxGetScalar(answer[0]) != 0;
}

/// Three outputs: the command raises nothing for what goes wrong on the disk, and tells it.
void copyAndTell(std::u16string_view source, std::u16string_view destination) {
    Outputs outputs(3);
    call(copyFile, outputs, {source, destination});
    const bool isDone = kxGetScalar(outputs[0]) != 0;
    std::cout << "copyfile: " << (isDone ? "done" : toDisplayBytes(textOf(outputs[2]))) << '\n';
}

void run() {
    Outputs none(0);
    call(makeDir, none, {u"results"});
    std::ofstream("notes.txt") << "one\n";
    copyAndTell(u"notes.txt", u"results");
    std::cout << "isfile: " << isFile(u"results/notes.txt") << '\n';
    copyAndTell(u"nothing.txt", u"results");

    try {
        Outputs noOutput(0);
        call(makeDir, noOutput, {u"notes.txt"});
    } catch (const foundation::core::except::IMsgIDException& error) {
        std::cout << error.get_error_id() << ": " << error.what() << '\n';
    }
    Outputs listing(0);
    call(bnFullDirFcn, listing, {u"results/*.txt"});
}

}  // namespace

int main() {
    connectStreams();
    KLInitialize_filemanip();
    run();
    KLTerminate_filemanip();
    return 0;
}
