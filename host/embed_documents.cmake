# Writes a C++ source with one function for each document, which gives its bytes (host/kwsh/help_documents.h).
#   cmake -DDOCUMENTS=... -DFUNCTIONS=... -DOUTPUT=... -P embed_documents.cmake
set(source "// Made of the manual pages by the build.\n#include \"host/kwsh/help_documents.h\"\n\nnamespace korvex::host {\n")
foreach(document function IN ZIP_LISTS DOCUMENTS FUNCTIONS)
    file(READ "${document}" bytes HEX)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND source
        "\nnamespace {\nconstexpr char ${function}Bytes[] = {${bytes}};\n}  // namespace\n"
        "std::string_view ${function}() noexcept { return {${function}Bytes, sizeof(${function}Bytes)}; }\n")
endforeach()
string(APPEND source "\n}  // namespace korvex::host\n")
file(WRITE "${OUTPUT}" "${source}")
