// The recycle state, the command `recycle`, and the recycle bin.
#include "io/filesystem/filemanip/delete_recycle_state.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_limits.h"
#include "platform/message_identifiers.h"
#include "platform/settings.h"
#include "platform/shell_file_operation.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

namespace {

constexpr const char16_t* settingKey = u"DeleteFilesPermanently";

std::shared_ptr<settings::core::Settings> environmentSettings() {
    const klutil::contextmgr::KcrID context = klutil::contextmgr::ContextRegistry::getKcrID();
    return settings::in_korvex::getSettingsRoot(context)->getSettingsByFullName(u"korvex");
}

/// The case of the letters A to Z does not count, and no other unit has one.
bool isWord(std::u16string_view text, std::u16string_view smallWord) {
    const auto isSame = [](char16_t unit, char16_t small) {
        const bool isCapital = unit >= u'A' && unit <= u'Z';
        return (isCapital ? unit + (u'a' - u'A') : unit) == small;
    };
    return std::equal(text.begin(), text.end(), smallWord.begin(), smallWord.end(), isSame);
}

kxArray* stateText(bool isRecycling) { return kxCreateString(isRecycling ? "on" : "off"); }

}  // namespace

bool getRecycleState() { return !environmentSettings()->get<bool>(settingKey, u""); }

bool setRecycleState(bool deletePermanently) {
    const std::shared_ptr<settings::core::Settings> group = environmentSettings();
    const bool deletedPermanently = group->get<bool>(settingKey, u"");
    group->set<bool>(settingKey, deletePermanently, u"user");
    return !deletedPermanently;
}

bool moveToRecycleBin(std::u16string path) {
    // The list of paths ends in two nulls: this one, and the string's own.
    path.push_back(u'\0');
    SHFILEOPSTRUCTW operation{};
    operation.wFunc = FO_DELETE;
    operation.pFrom = reinterpret_cast<decltype(operation.pFrom)>(path.c_str());
    operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_FILESONLY;
    return SHFileOperationW(&operation) == 0;
}

KX_MODULE_ENTRY void bnFullRecycleFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    checkArgumentCounts(limits::fullRecycle, nlhs, nrhs);
    if (nrhs == 0) {
        // Set without being asked for, too, on purpose: the interpreter shows it then.
        plhs[0] = stateText(getRecycleState());
        return;
    }
    if (!Velquist::String::isScalarText(prhs[0], true, false)) {
        raise(KORVEX::string::MustBeSingleString(labelText(KORVEX::RECYCLE::State())));
    }
    const std::u16string_view text = textOfArgument(prhs[0], true);
    const bool isOff = isWord(text, u"off");
    if (!isOff && !isWord(text, u"on")) raise(KORVEX::RECYCLE::InvalidRecycleState());
    const bool wasRecycling = setRecycleState(isOff);
    if (nlhs == 1) plhs[0] = stateText(wasRecycling);
}

}  // namespace korvex::filemanip
