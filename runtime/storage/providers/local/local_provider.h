// The provider of the scheme "file": the file systems of this machine.
//
// Paths may be longer than the system's own limit, and names may be any bytes. A location with a host names
// nothing on a platform that has no network paths. Trees are walked by open handles, never by path, so no
// link that is swapped in leads out of them.
#pragma once

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

class LocalProvider : public Provider {
public:
    LocalProvider();
    ExistenceType existence(const AbsoluteIRI& location) override;
    ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override;
    CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override;

    bool isWritable(const AbsoluteIRI& location) override;
    bool isSameFile(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept override;
    bool isSameFolder(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept override;
    std::size_t firstUnwritable(std::span<const AbsoluteIRI> locations,
                                const std::function<void()>& onFailure) override;
    void setWritable(const AbsoluteIRI& location, bool isWritable) override;
    std::vector<ListedEntry> list(const AbsoluteIRI& folder, std::u16string_view pattern) override;
    std::shared_ptr<const FoundPlace> hold(const AbsoluteIRI& folder) override;
    std::unique_ptr<InputStream> read(const AbsoluteIRI& file) override;
    std::unique_ptr<OutputStream> write(const AbsoluteIRI& file, ReplacementPolicy policy) override;

    void copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    std::unique_ptr<WorkAhead> copyAhead(std::vector<FilePair> files, ReplacementPolicy policy) override;
    void moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    void copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;
    void moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;
    void removeFile(const AbsoluteIRI& file) override;
    void removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy policy) override;
    void createFolder(const AbsoluteIRI& folder) override;
    void createFolderRecursive(const AbsoluteIRI& folder) override;
    void makeDurable(const AbsoluteIRI& location) override;
};

}  // namespace korvex::runtime::storage
