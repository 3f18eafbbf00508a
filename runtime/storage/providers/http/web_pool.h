// Things that keep connections open, waiting for their next use.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "runtime/storage/providers/http/web_provider.h"

namespace korvex::runtime::storage {

/// A pool of `WebRequest` or `WebDownload`. Safe for several threads; each takes one of its own.
template <class Connector>
class WebPool {
public:
    explicit WebPool(WebOptions options) : options_(std::move(options)) { idle_.reserve(maximumIdle); }

    std::unique_ptr<Connector> take() {
        {
            const std::lock_guard lock(guard_);
            if (!idle_.empty()) {
                auto connector = std::move(idle_.back());
                idle_.pop_back();
                return connector;
            }
        }
        return std::make_unique<Connector>(options_);
    }

    void giveBack(std::unique_ptr<Connector> connector) noexcept {
        const std::lock_guard lock(guard_);
        if (idle_.size() < maximumIdle) idle_.push_back(std::move(connector));
    }

    /// Taken out for the length of a scope.
    class Loan {
    public:
        explicit Loan(WebPool& pool) : pool_(pool), connector_(pool.take()) {}
        ~Loan() { pool_.giveBack(std::move(connector_)); }
        Loan(const Loan&) = delete;
        Loan& operator=(const Loan&) = delete;

        Connector* operator->() const noexcept { return connector_.get(); }

    private:
        WebPool& pool_;
        std::unique_ptr<Connector> connector_;
    };

private:
    static constexpr std::size_t maximumIdle = 8;

    const WebOptions options_;
    std::mutex guard_;
    std::vector<std::unique_ptr<Connector>> idle_;
};

}  // namespace korvex::runtime::storage
