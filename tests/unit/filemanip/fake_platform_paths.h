// Stand-ins for the platform's path functions, with a log of their calls and answers that a test can change.
//
// As they come they follow the rules of Windows, on whatever platform the tests run, with `C:\here` as the
// current folder: there a path can keep its text, and one can stay relative.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace korvex::filemanip::tests {

struct FakePlatform {
    FakePlatform();

    /// Each call in order, as "name(argument)"; the classification of texts is not among them.
    std::vector<std::u16string> calls;

    std::function<bool(const std::u16string&)> isUncPath;
    std::function<bool(const std::u16string&)> isLongPath;
    std::function<bool(const std::u16string&)> isAbsolute;
    std::function<std::u16string(const std::u16string& path, const std::u16string& base)> absolute;
    /// Runs before a text becomes a location, to raise what it likes.
    std::function<void(const std::u16string&)> beforeLocation;
    bool currentFolderExists = true;

    /// The identifiers of the user errors that were handed to the interpreter. It returns from every one.
    std::vector<std::string> handedErrors;
};

/// The stand-ins that are in force; put back to how they come by assigning a new object.
FakePlatform& fakePlatform();

}  // namespace korvex::filemanip::tests
