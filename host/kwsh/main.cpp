// kwsh, the command host.
#include <iostream>

#include "host/kwsh/program.h"
#include "runtime/process/process.h"

int main(int count, char* arguments[]) {
    try {
        return korvex::host::runProgram(korvex::runtime::process::programArguments(count, arguments),
                                        {std::cin, std::cout, std::cerr});
    } catch (const std::exception& error) {
        std::cerr << "kwsh: " << error.what() << '\n';
        return 1;
    }
}
