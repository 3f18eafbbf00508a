// Values and failures as JSON, and JSON as one line of text.
//
// The JSON library holds text as UTF-8, which has no place for an unpaired surrogate: such a unit is held
// here as the three bytes that UTF-8 would use for its number, and written as the escape \udXXX.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "host/kwsh/failure.h"
#include "platform/kx.h"

namespace korvex::host {

using Json = nlohmann::ordered_json;

/// 16-bit text as a JSON text, unpaired surrogates kept.
Json jsonText(std::u16string_view text);

/// {"class": ..., "size": [...], "data": ...}. Cells and structures nested deeper than 100 have null as their
/// data.
Json jsonValue(const kxArray* value);

/// {"id": ..., "text": ...}
Json jsonMessage(std::string_view identifier, std::u16string_view text);

/// One line without its end, UTF-8.
std::string jsonLine(const Json& json);

}  // namespace korvex::host
