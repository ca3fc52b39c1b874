// node_reference FOLDER          writes the reference pages of the node classes below FOLDER, which is docs/reference
// node_reference --check FOLDER  compares instead; says which pages differ and answers 1 if any does
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "engine/node/node_class.h"
#include "tools/node_reference/pages.h"

namespace fs = std::filesystem;

namespace {

std::string contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Number of pages that differ, are missing, or belong to no family any more.
int compare(const nemra::reference::Pages& pages, const fs::path& folder) {
    int wrong = 0;
    const auto complain = [&](const std::string& name, const char* what) {
        std::cerr << (folder / name).string() << ": " << what << "; run \"make docs\"\n";
        ++wrong;
    };
    for (const auto& [name, page] : pages) {
        if (contents(folder / name) != page) complain(name, "isn't what the catalogue says");
    }
    for (const auto& entry : fs::directory_iterator(folder / "nodes")) {
        const std::string name = "nodes/" + entry.path().filename().string();
        if (!pages.contains(name)) complain(name, "belongs to no family");
    }
    return wrong;
}

bool write(const nemra::reference::Pages& pages, const fs::path& folder) {
    fs::create_directories(folder / "nodes");
    for (const auto& entry : fs::directory_iterator(folder / "nodes")) {
        if (!pages.contains("nodes/" + entry.path().filename().string())) fs::remove(entry.path());  // of a family that went
    }
    for (const auto& [name, page] : pages) {
        std::ofstream file(folder / name, std::ios::binary);
        if (!(file << page) || !file.flush()) {
            std::cerr << (folder / name).string() << ": can't be written\n";
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const bool check = argc == 3 && std::string(argv[1]) == "--check";
    if (argc != 2 && !check) {
        std::cerr << "usage: node_reference [--check] FOLDER\n";
        return 2;
    }
    try {
        nemra::node::registerClasses();
        const auto pages = nemra::reference::makePages();
        return check ? compare(pages, argv[2]) != 0 : !write(pages, argv[1]);
    } catch (const std::exception& fault) {
        std::cerr << "node_reference: " << fault.what() << '\n';
        return 1;
    }
}
