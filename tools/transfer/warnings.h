#pragma once

#include <cstddef>
#include <string>
#include <vector>

// The warnings of an import. Only the first ones are kept, since a file can have one in every row.
class ImportWarnings
{
  public:
    static constexpr std::size_t Most = 20;

    // `compose` returns the text. It is not called for a warning that is only counted.
    template <typename Compose> void Add(const Compose& compose)
    {
        if (Kept.size() < Most)
            Kept.push_back(compose());
        else
            ++MoreCount;
    }

    const std::vector<std::string>& Texts() const { return Kept; }
    // How many warnings were only counted.
    std::size_t More() const { return MoreCount; }

  private:
    std::vector<std::string> Kept;
    std::size_t MoreCount = 0;
};
