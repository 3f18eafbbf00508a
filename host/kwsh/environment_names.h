// What the environment holds, for completion: its variables, packages and folders.
#pragma once

#include "host/kwsh/completion.h"
#include "host/kwsh/workspace.h"

namespace korvex::host {

class EnvironmentNames : public CompletionNames {
public:
    explicit EnvironmentNames(const Workspace& workspace) : workspace_(workspace) {}

    std::vector<std::u16string> variables() const override;
    std::vector<std::u16string> packages() const override;
    std::vector<FolderEntry> entries(const std::u16string& folder) const override;

private:
    const Workspace& workspace_;
};

}  // namespace korvex::host
