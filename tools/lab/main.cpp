#include "Command.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

using dorix::Json;
using dorix::lab::Command;

std::vector<Command> allCommands() {
    std::vector<Command> all;
    for (const auto& group :
         {dorix::lab::assistantCommands(), dorix::lab::cloudCommands(), dorix::lab::writingCommands(),
          dorix::lab::languageCommands(), dorix::lab::contextCommands(), dorix::lab::dictationCommands(),
          dorix::lab::memoryCommands(), dorix::lab::readingCommands(), dorix::lab::recallCommands(),
          dorix::lab::routingCommands(), dorix::lab::routeCommands(), dorix::lab::speechCommands(),
          dorix::lab::writeCommands()}) {
        all.insert(all.end(), group.begin(), group.end());
    }
    return all;
}

int usage(const std::vector<Command>& commands) {
    std::cerr << "usage: dorix-lab COMMAND\n\n"
                 "Reads one JSON object a line on standard input, writes one a line on standard output.\n"
                 "A line that is not understood gives {\"error\": \"...\"} and a final exit status of 1.\n\n";
    for (const auto& command : commands) {
        std::cerr << "  " << command.name << "\n    " << command.input << " -> " << command.output << '\n';
    }
    return 2;
}

/// The answer to one line; `understood` turns false when there is none.
Json answer(const Command& command, const std::string& line, bool& understood) {
    try {
        const auto input = Json::parse(line);
        if (!input.is_object()) throw dorix::lab::BadInput("the line is not an object");
        return command.run(input);
    } catch (const std::exception& error) {
        understood = false;
        return {{"error", error.what()}};
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto commands = allCommands();
    const std::string wanted = argc == 2 ? argv[1] : "";
    for (const auto& command : commands) {
        if (command.name != wanted) continue;
        bool understood = true;
        for (std::string line; std::getline(std::cin, line);) {
            const auto text =
                answer(command, line, understood).dump(-1, ' ', false, Json::error_handler_t::replace);
            std::cout << text << std::endl;
        }
        return understood ? 0 : 1;
    }
    return usage(commands);
}
