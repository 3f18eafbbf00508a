// The forms of `package` in a table, and what each of them does.
#include "host/kwsh/package_commands.h"

#include <algorithm>
#include <array>

#include "host/kwsh/failure.h"
#include "platform/path_management.h"
#include "runtime/packages/package_registry.h"

namespace korvex::host {

namespace packages = runtime::packages;
namespace vfs = foundation::storage::vfs;
using Velquist::PathManagement::GetStringFromIRI;

namespace {

[[noreturn]] void raiseBadForm() { throw HostError("badArgument", messages::packageForm()); }

std::u16string packageName(const Value& argument) {
    std::u16string name = textArgument(argument);
    if (name.empty()) throw HostError("badArgument", messages::packageNeedsName());
    return name;
}

Outputs addPackage(int, Arguments arguments) {
    const std::u16string folder = textArgument(arguments[0]);
    const std::u16string name = packageName(arguments[1]);
    const bool isEditable = arguments.size() > 2;
    if (isEditable && textArgument(arguments[2]) != u"editable") raiseBadForm();
    try {
        packages::registerPackage(folder, name, isEditable);
    } catch (const vfs::Exception& error) {
        throw HostError("cannotAddPackage",
                        messages::cannotAddPackage(folder, reasonWithFolder(error.getErrorCode())));
    }
    return {};
}

Outputs removePackage(int, Arguments arguments) {
    const std::u16string name = packageName(arguments[0]);
    if (!packages::unregisterPackage(name)) {
        throw HostError("noSuchPackage", messages::noSuchPackage(name));
    }
    return {};
}

Outputs listPackages(int outputs, Arguments) {
    std::vector<std::u16string> lines;
    for (const packages::RegisteredPackage& package : packages::registeredPackages()) {
        const std::u16string root = GetStringFromIRI(vfs::AbsoluteIRI(package.root));
        lines.push_back(package.name + u"  " + root + (package.isEditable ? u"  editable" : u""));
    }
    return linesOrPrint(lines, outputs);
}

Outputs switchOn(int, Arguments) {
    packages::setPackageManagerEnabled(true);
    return {};
}

Outputs switchOff(int, Arguments) {
    packages::setPackageManagerEnabled(false);
    return {};
}

struct Form {
    std::u16string_view word;
    std::size_t fewestArguments;
    std::size_t mostArguments;
    Outputs (*run)(int outputs, Arguments arguments);
};

constexpr std::array forms = {
    Form{u"add", 2, 3, addPackage}, Form{u"remove", 1, 1, removePackage}, Form{u"list", 0, 0, listPackages},
    Form{u"on", 0, 0, switchOn},    Form{u"off", 0, 0, switchOff},
};

}  // namespace

Outputs runPackage(Workspace&, int outputs, Arguments arguments) {
    if (arguments.empty()) raiseBadForm();
    const auto form = std::ranges::find(forms, textArgument(arguments[0]), &Form::word);
    const Arguments rest = arguments.subspan(1);
    if (form == forms.end() || rest.size() < form->fewestArguments || rest.size() > form->mostArguments) {
        raiseBadForm();
    }
    return form->run(outputs, rest);
}

}  // namespace korvex::host
