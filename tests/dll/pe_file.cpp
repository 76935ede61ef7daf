// SPDX-License-Identifier: MIT
#include "tests/dll/pe_file.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace kfx {

namespace {

struct Image {
    std::string bytes;
    size_t longNames = 0;  // the offset of the table with names of more than eight characters
    std::vector<IMAGE_SECTION_HEADER> sections;
};

template <typename T>
bool ReadAt(const std::string& bytes, size_t offset, T& value) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) return false;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return true;
}

// Turns an address relative to the loaded image into a place in the file; beyond the file where there is
// none.
size_t FileOffset(const Image& image, DWORD address) {
    for (const auto& section : image.sections) {
        if (address >= section.VirtualAddress && address - section.VirtualAddress < section.SizeOfRawData) {
            return address - section.VirtualAddress + section.PointerToRawData;
        }
    }
    return image.bytes.size();
}

std::string TextAt(const Image& image, DWORD address) {
    const size_t offset = FileOffset(image, address);
    const size_t end = image.bytes.find('\0', offset);
    return end == std::string::npos ? std::string() : image.bytes.substr(offset, end - offset);
}

// A name of more than eight characters stands as "/" and its offset in the table.
std::string SectionName(const Image& image, const IMAGE_SECTION_HEADER& header) {
    const auto* const characters = reinterpret_cast<const char*>(header.Name);
    std::string name(characters, strnlen(characters, sizeof header.Name));
    if (!name.starts_with('/')) return name;
    const size_t offset = image.longNames + std::strtoul(name.c_str() + 1, nullptr, 10);
    const size_t end = image.bytes.find('\0', offset);
    return end == std::string::npos ? name : image.bytes.substr(offset, end - offset);
}

void ReadSections(const Image& image, PeFile& file) {
    for (const IMAGE_SECTION_HEADER& header : image.sections) {
        const size_t offset = std::min<size_t>(header.PointerToRawData, image.bytes.size());
        file.sections.push_back({.name = SectionName(image, header),
                                 .characteristics = header.Characteristics,
                                 .address = header.VirtualAddress,
                                 .bytes = image.bytes.substr(offset, header.SizeOfRawData)});
    }
}

void ReadExports(const Image& image, DWORD address, PeFile& file) {
    IMAGE_EXPORT_DIRECTORY directory;
    if (address == 0 || !ReadAt(image.bytes, FileOffset(image, address), directory)) return;
    file.exportedFunctions = directory.NumberOfFunctions;
    const size_t names = FileOffset(image, directory.AddressOfNames);
    for (DWORD i = 0, name; i < directory.NumberOfNames; ++i) {
        if (!ReadAt(image.bytes, names + i * sizeof(DWORD), name)) return;
        file.exportedNames.push_back(TextAt(image, name));
    }
}

void ReadImports(const Image& image, DWORD address, PeFile& file) {
    if (address == 0) return;
    IMAGE_IMPORT_DESCRIPTOR descriptor;
    for (size_t offset = FileOffset(image, address);
         ReadAt(image.bytes, offset, descriptor) && descriptor.Name != 0; offset += sizeof(descriptor)) {
        file.importedLibraries.push_back(TextAt(image, descriptor.Name));
    }
}

}  // namespace

bool ReadPeFile(const char* path, PeFile& file) {
    std::ifstream stream(path, std::ios::binary);
    Image image;
    image.bytes.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());

    IMAGE_DOS_HEADER dos;
    IMAGE_NT_HEADERS64 header;
    if (!ReadAt(image.bytes, 0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE) return false;
    const auto headerOffset = static_cast<size_t>(dos.e_lfanew);
    if (!ReadAt(image.bytes, headerOffset, header) || header.Signature != IMAGE_NT_SIGNATURE) return false;
    if (header.OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR64_MAGIC) return false;

    size_t offset =
        headerOffset + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) + header.FileHeader.SizeOfOptionalHeader;
    for (int i = 0; i < header.FileHeader.NumberOfSections; ++i, offset += sizeof(IMAGE_SECTION_HEADER)) {
        IMAGE_SECTION_HEADER section;
        if (!ReadAt(image.bytes, offset, section)) return false;
        image.sections.push_back(section);
    }

    constexpr size_t kSymbolBytes = 18;
    image.longNames =
        header.FileHeader.PointerToSymbolTable + header.FileHeader.NumberOfSymbols * kSymbolBytes;

    file.machine = header.FileHeader.Machine;
    file.characteristics = header.FileHeader.Characteristics;
    file.symbols = header.FileHeader.NumberOfSymbols;
    file.dllCharacteristics = header.OptionalHeader.DllCharacteristics;
    file.subsystemMajor = header.OptionalHeader.MajorSubsystemVersion;
    file.subsystemMinor = header.OptionalHeader.MinorSubsystemVersion;
    file.time = header.FileHeader.TimeDateStamp;
    ReadSections(image, file);
    const auto& directories = header.OptionalHeader.DataDirectory;
    ReadExports(image, directories[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress, file);
    ReadImports(image, directories[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress, file);
    return true;
}

}  // namespace kfx
