// write_messages_document CATALOG_FOLDER FILE: writes docs/messages.md anew.
#include <exception>
#include <fstream>
#include <iostream>

#include "docs/generator/messages_document.h"

int main(int count, char* arguments[]) {
    if (count != 3) {
        std::cerr << "usage: write_messages_document CATALOG_FOLDER FILE\n";
        return 2;
    }
    try {
        const std::string document = korvex::docs::messagesDocument(arguments[1]);
        std::ofstream file(arguments[2], std::ios::binary);
        if (!(file << document << std::flush)) {
            std::cerr << arguments[2] << " cannot be written\n";
            return 1;
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
