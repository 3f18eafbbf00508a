// The table of names that make a folder more than an ordinary one.
#include "runtime/dispatcher/path_entry_type.h"

#include "runtime/dispatcher/path_locations.h"

namespace korvex::runtime::dispatcher {

namespace path_management = Velquist::PathManagement;

path_management::PathEntryType pathEntryType(std::u16string_view name, paths::PathStyle style) {
    using namespace path_management;
    if (name.size() > 1 && name.front() == u'@') return ClassFolder;
    if (name.size() > 1 && name.front() == u'+') return NamespaceFolder;
    if (areSameNames(name, u"private", style)) return PrivateFolder;
    if (areSameNames(name, u"resources", style)) return ResourcesFolder;
    return OrdinaryFolder;
}

}  // namespace korvex::runtime::dispatcher

namespace Velquist::PathManagement {

PathEntryType GetPathEntryTypeFromBaseName(const std::u16string& name) {
    namespace runtime = korvex::runtime;
    return runtime::dispatcher::pathEntryType(name, runtime::paths::nativeStyle);
}

}  // namespace Velquist::PathManagement
