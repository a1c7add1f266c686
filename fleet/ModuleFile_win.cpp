#include "ModuleFile.h"

#include <windows.h>

namespace {

constexpr DWORD longestPath = 32768;

}

std::string moduleFile(const void *address)
{
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<LPCWSTR>(address), &module))
        return std::string();
    std::wstring path(longestPath, L'\0');
    path.resize(GetModuleFileNameW(module, &path[0], longestPath));
    const int length = int(path.size());
    std::string bytes(path.size() * 3, '\0'); // no UTF-16 unit takes more
    bytes.resize(size_t(WideCharToMultiByte(
        CP_UTF8, 0, path.data(), length, &bytes[0], int(bytes.size()), nullptr, nullptr)));
    return bytes;
}
