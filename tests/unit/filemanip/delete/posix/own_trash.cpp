// The tests of `delete` have a trash of their own from the start, whichever of them switches recycling on:
// that of the user who runs them is never touched.
#include "tests/unit/trash/posix/trash_of_process.h"

namespace korvex::filemanip::tests {
namespace {

[[maybe_unused]] const korvex::tests::TrashOfProcess& ownTrash = korvex::tests::TrashOfProcess::get();

}  // namespace
}  // namespace korvex::filemanip::tests
