#include "terminal/prompt.h"

#include "refusal.h"
#include "terminal/console.h"

#include <iostream>

bool Confirm(const std::string& question, const std::string& flag)
{
    if (!InputIsTerminal())
        throw Refusal(question + " Standard input is not a terminal; pass " + flag + " to confirm");
    const std::optional<std::string> answer = Ask(question + " [y/N]");
    return answer == "y" || answer == "Y" || answer == "yes";
}

std::optional<std::string> Ask(const std::string& question)
{
    std::cerr << question << ' ' << std::flush;
    std::string answer;
    std::optional<char> typed = TypedByte();
    for (; typed && *typed != '\n'; typed = TypedByte())
        answer += *typed;
    return typed ? std::optional(answer) : std::nullopt;
}
