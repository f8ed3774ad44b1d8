// Paths on Windows: their UTF-8, the names that Windows does not allow, and long paths.
#include "system.h"

#include <algorithm>
#include <cwctype>
#include <string_view>
#include <utility>

#include <windows.h>

namespace plant_file
{

namespace
{

bool BeginsWith(std::wstring_view text, std::wstring_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// Whether the name is that of a device, in every directory and with every extension.
bool NamesDevice(const std::wstring& name)
{
    std::wstring stem = name.substr(0, name.find(L'.'));
    stem.erase(stem.find_last_not_of(L' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towupper(c)); });
    for (const wchar_t* device : {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"})
        if (stem == device)
            return true;
    return stem.size() == 4 && (BeginsWith(stem, L"COM") || BeginsWith(stem, L"LPT")) && stem[3] >= L'1' &&
           stem[3] <= L'9';
}

std::string ProblemOfPart(const std::wstring& name)
{
    if (name == L"." || name == L"..")
        return {};
    const std::size_t bad = name.find_first_of(L"<>:\"|?*");
    if (bad != std::wstring::npos)
        return std::string("Windows does not allow the character ") + static_cast<char>(name[bad]) + " in a file name";
    if (std::any_of(name.begin(), name.end(), [](wchar_t c) { return c < L' '; }))
        return "Windows does not allow a control character in a file name";
    if (name.find(L'\xFFFD') != std::wstring::npos) // by PathOfText
        return "the path is not UTF-8";
    if (!name.empty() && (name.back() == L' ' || name.back() == L'.'))
        return "Windows does not allow a blank or a dot at the end of a file name";
    if (NamesDevice(name))
        return "Windows reserves the name " + TextOfPath(name) + " for a device";
    return {};
}

// Without the prefix of long paths, since <filesystem> does not find a file by a path with it. Without it, a program
// reaches long paths if its manifest allows them.
std::wstring WithoutPrefix(std::wstring path)
{
    constexpr std::wstring_view prefix = L"\\\\?\\";
    constexpr std::wstring_view networkPrefix = L"\\\\?\\UNC\\";
    if (BeginsWith(path, networkPrefix))
        path.replace(0, networkPrefix.size(), L"\\\\");
    else if (BeginsWith(path, prefix))
        path.erase(0, prefix.size());
    return path;
}

constexpr DWORD LongestPath = 32768;

// The path of a file as the system has it; empty where the file does not exist.
std::wstring FinalPath(const std::wstring& path)
{
    std::wstring final(LongestPath, L'\0');
    const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return {};
    final.resize(GetFinalPathNameByHandleW(file, final.data(), LongestPath, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS));
    CloseHandle(file);
    return WithoutPrefix(std::move(final));
}

} // namespace

// Libstdc++'s weakly_canonical() returns another path where memory runs out.
std::filesystem::path CanonicalPath(const std::filesystem::path& path)
{
    std::wstring whole(LongestPath, L'\0');
    whole.resize(GetFullPathNameW(path.c_str(), LongestPath, whole.data(), nullptr));
    std::wstring missing;
    for (std::wstring existing = whole; !existing.empty() && existing.back() != L':';)
    {
        if (const std::wstring final = FinalPath(existing); !final.empty())
            return final + missing;
        const std::size_t parent = std::min(existing.find_last_of(L"\\/"), existing.size());
        missing.insert(0, existing, parent, std::wstring::npos);
        existing.resize(parent);
    }
    return whole;
}

std::filesystem::path PathOfText(const std::string& text)
{
    const int length = static_cast<int>(text.size());
    const int size =
        MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0); // bytes that are not UTF-8 become U+FFFD
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), size);
    return WithoutPrefix(std::move(wide));
}

std::string TextOfPath(const std::filesystem::path& path)
{
    const std::wstring& wide = path.native();
    const int length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text.data(), size, nullptr, nullptr);
    return text;
}

void RequirePossibleName(const std::filesystem::path& path,
                         void (*fail)(const std::string& step, const std::string& reason))
{
    for (const std::filesystem::path& part : path.relative_path())
        if (const std::string problem = ProblemOfPart(part.native()); !problem.empty())
            fail("", problem);
}

} // namespace plant_file
