// The locale of the environment: the one that was set, or else the one of the process.
#include "runtime/messages/locale.h"

#include <mutex>
#include <utility>

#include "platform/message_catalog.h"
#include "runtime/messages/process_locale.h"

namespace korvex::runtime::messages {
namespace {

// Worker threads build exceptions, and these take their texts in the global locale.
struct ChosenLocale {
    std::mutex mutex;
    std::string name;
};

ChosenLocale& chosenLocale() {
    static ChosenLocale chosen;
    return chosen;
}

std::string globalLocaleName() {
    const std::lock_guard lock(chosenLocale().mutex);
    return chosenLocale().name.empty() ? processLocaleName() : chosenLocale().name;
}

}  // namespace

void setGlobalLocale(const std::string& name) {
    const std::lock_guard lock(chosenLocale().mutex);
    chosenLocale().name = name;
}

}  // namespace korvex::runtime::messages

namespace fl::i18n {

KwLocale::KwLocale(std::string name) : name_(std::move(name)) {}

KwLocale KwLocale::global() { return KwLocale(korvex::runtime::messages::globalLocaleName()); }

}  // namespace fl::i18n
