#include "space/ScanTree.h"

#include "common/PathText.h"

#include <algorithm>
#include <cstring>

namespace corvel {

ScanDirectory* ScanArena::newDirectory() {
    return &directories_.emplace_back();
}

ScanFile* ScanArena::newFiles(std::size_t count) {
    if (count == 0) return nullptr;
    if (count > fileBlockSize - filesUsed_) {
        // A fresh block; a run longer than a block gets a block of its own size.
        fileBlocks_.push_back(std::make_unique<ScanFile[]>(std::max(count, fileBlockSize)));
        filesUsed_ = 0;
        if (count > fileBlockSize) {
            filesUsed_ = fileBlockSize;
            return fileBlocks_.back().get();
        }
    }
    ScanFile* first = fileBlocks_.back().get() + filesUsed_;
    filesUsed_ += count;
    return first;
}

const char* ScanArena::copyName(std::string_view name) {
    const std::size_t needed = name.size() + 1;
    if (needed > nameBlockSize - namesUsed_) {
        nameBlocks_.push_back(std::make_unique_for_overwrite<char[]>(std::max(needed, nameBlockSize)));
        namesUsed_ = needed > nameBlockSize ? nameBlockSize : 0;
        if (needed > nameBlockSize) {
            char* block = nameBlocks_.back().get();
            std::memcpy(block, name.data(), name.size());
            block[name.size()] = '\0';
            return block;
        }
    }
    char* copy = nameBlocks_.back().get() + namesUsed_;
    std::memcpy(copy, name.data(), name.size());
    copy[name.size()] = '\0';
    namesUsed_ += needed;
    return copy;
}

std::string ScanTree::path(const ScanDirectory* folder) const {
    std::vector<std::string_view> parts;
    for (const ScanDirectory* at = folder; at; at = at->parent) parts.push_back(at->nameView());
    std::string result;
    for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
        if (part == parts.rbegin()) {
            result.append(*part);
        } else {
            if (result.empty() || result.back() != '/') result.push_back('/');
            result.append(*part);
        }
    }
    return result;
}

std::string ScanTree::path(const ScanDirectory* folder, std::string_view name) const {
    return joinPath(path(folder), name);
}

}  // namespace corvel
