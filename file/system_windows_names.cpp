// Paths on Windows: their UTF-8, the names that Windows does not allow, and long paths.
#include "system.h"

#include <algorithm>
#include <cwctype>

#include <windows.h>

namespace plant_file
{

namespace
{

constexpr std::wstring_view LongPrefix = L"\\\\?\\";
constexpr std::wstring_view LongNetworkPrefix = L"\\\\?\\UNC\\";

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
    if (!name.empty() && (name.back() == L' ' || name.back() == L'.'))
        return "Windows does not allow a blank or a dot at the end of a file name";
    if (NamesDevice(name))
        return "Windows reserves the name " + TextOfPath(name) + " for a device";
    return {};
}

} // namespace

std::filesystem::path PathOfText(const std::string& text)
{
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    if (size == 0 && length != 0)
        throw std::filesystem::filesystem_error("the path is not UTF-8",
                                                std::make_error_code(std::errc::illegal_byte_sequence));
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), size);
    return wide;
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

std::string NameProblem(const std::filesystem::path& path)
{
    std::wstring whole = path.native();
    if (BeginsWith(whole, LongNetworkPrefix))
        whole.replace(0, LongNetworkPrefix.size(), L"\\\\");
    else if (BeginsWith(whole, LongPrefix))
        whole.erase(0, LongPrefix.size());
    for (const std::filesystem::path& part : std::filesystem::path(whole).relative_path())
        if (std::string problem = ProblemOfPart(part.native()); !problem.empty())
            return problem;
    return {};
}

std::filesystem::path WholePath(const std::filesystem::path& path)
{
    constexpr std::size_t longest = 240; // of 260, and SQLite appends to the name
    std::filesystem::path whole = std::filesystem::absolute(path);
    const std::wstring& text = whole.native();
    if (text.size() <= longest || BeginsWith(text, LongPrefix))
        return whole;
    if (BeginsWith(text, L"\\\\"))
        return std::wstring(LongNetworkPrefix) + text.substr(2);
    return std::wstring(LongPrefix) + text;
}

} // namespace plant_file
