// A host with settings and a recycle bin of its own: own_settings.cpp and own_recycle_bin.cpp take the place
// of what the runtime has. Everything else is the runtime's.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "command_call.h"
#include "io/filesystem/filemanip/module_entries.h"
#include "runtime/text/encoding.h"

int main() {
    using example::call;
    using example::Outputs;
    using example::textOf;
    using korvex::runtime::text::toDisplayBytes;

    KLInitialize_filemanip();
    Outputs state(1);
    call(bnFullRecycleFcn, state, {});
    std::cout << "recycle is " << toDisplayBytes(textOf(state[0])) << '\n';

    std::ofstream("draft.txt") << "one\n";
    Outputs none(0);
    call(bnFullDeleteFcn, none, {u"draft.txt"});
    std::cout << "draft.txt: " << std::filesystem::exists("draft.txt")
              << ", bin/draft.txt: " << std::filesystem::exists("bin/draft.txt") << '\n';

    Outputs before(1);
    call(bnFullRecycleFcn, before, {u"off"});
    std::ofstream("scrap.txt") << "two\n";
    call(bnFullDeleteFcn, none, {u"scrap.txt"});
    std::cout << "scrap.txt: " << std::filesystem::exists("scrap.txt")
              << ", bin/scrap.txt: " << std::filesystem::exists("bin/scrap.txt") << '\n';
    KLTerminate_filemanip();
    return 0;
}
