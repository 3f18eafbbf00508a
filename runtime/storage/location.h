// The components behind a location's text, and the rules by which text and components turn into each other.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage {

/// Where a provider found an item when it listed a folder, beyond the path: what is done to the item happens
/// there, whatever stands on the way to it by then. The provider's own.
class FoundPlace {
public:
    virtual ~FoundPlace() = default;
};

}  // namespace korvex::runtime::storage

namespace foundation::storage::vfs {

/// What a location consists of. Immutable; text and name are made when first asked for, by any thread.
struct AbsoluteIRI::Parts {
    using FoundPlace = korvex::runtime::storage::FoundPlace;

    Parts(std::u16string scheme, std::u16string host, std::u16string path,
          std::shared_ptr<const FoundPlace> found = nullptr);

    /// In small letters.
    const std::u16string scheme;
    /// As typed, with a port and user where there is one. Empty for a local path.
    const std::u16string host;
    /// Begins with "/", separated by "/" on every platform, without a separator at its end but for the root.
    /// Decoded, `.` and `..` as they are. Of a web location: encoded, with its query, as it was typed.
    const std::u16string path;
    /// Null but for what a listing gave. No part of what the location says.
    const std::shared_ptr<const FoundPlace> found;
    /// The provider has told that a folder stands there, and no link: from then on this location is not
    /// entered through a link that somebody puts in its place.
    mutable std::atomic<bool> isKnownFolder{false};
    /// A listing has told that a plain file stands there, and no link: to open it does nothing else.
    mutable std::atomic<bool> isKnownFile{false};
    /// When the provider last saw that the file may be written, and what it had protected by then; 0 when it
    /// has not. The provider's own.
    mutable std::atomic<std::uint64_t> writableSince{0};
    mutable std::atomic<std::uint64_t> writableBefore{0};

    const std::u16string& text() const;
    const std::u16string& name() const;

private:
    /// A text that is made once. Unlike `std::call_once` it costs no system call when nobody waits.
    class Derived {
    public:
        template <class Make>
        const std::u16string& get(const Make& make) {
            State state = State::none;
            while ((state = state_.load(std::memory_order_acquire)) != State::made) {
                if (state == State::making) {
                    state_.wait(State::making);
                } else if (state_.compare_exchange_strong(state, State::making)) {
                    makeWith(make);
                }
            }
            return value_;
        }

    private:
        enum class State { none, making, made };

        template <class Make>
        void makeWith(const Make& make) {
            try {
                value_ = make();
            } catch (...) {
                enter(State::none);
                throw;
            }
            enter(State::made);
        }
        void enter(State state) noexcept {
            state_.store(state, std::memory_order_release);
            state_.notify_all();
        }

        std::u16string value_;
        std::atomic<State> state_{State::none};
    };
    mutable Derived text_;
    mutable Derived name_;
};

}  // namespace foundation::storage::vfs

namespace korvex::runtime::storage {

using foundation::storage::vfs::AbsoluteIRI;

inline constexpr std::u16string_view localScheme = u"file";

/// http and https: their paths stay encoded.
bool isWebScheme(std::u16string_view scheme) noexcept;

/// A location from its components, without any check of theirs. The path may be native text of a POSIX path.
AbsoluteIRI makeLocation(std::u16string scheme, std::u16string host, std::u16string path);

/// The item of that name in a folder that was listed.
AbsoluteIRI foundLocation(const AbsoluteIRI& folder, const std::u16string& name,
                          std::shared_ptr<const FoundPlace> found);

/// Percent-encodes what cannot stand in a location's text: blank, `%`, `?`, `#`, controls, and units that
/// stand for undecodable bytes.
std::u16string encodePath(std::u16string_view path);
/// Undoes percent encoding, as `decodeURL`.
std::u16string decodePath(std::u16string_view text);

}  // namespace korvex::runtime::storage
