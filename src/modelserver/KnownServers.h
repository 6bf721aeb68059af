#pragma once

#include <array>

namespace dorix {

/// The ports on which servers of language models listen unless they are told otherwise, by how many people
/// have them. Others listen on some of these as well: whoever answers is first asked for its models.
inline constexpr std::array knownModelPorts{
    11434,  // Ollama
    1234,   // LM Studio
    8080,   // llama.cpp's server; LocalAI
    1337,   // Jan
    4891,   // GPT4All
    5001,   // KoboldCpp
    8000,   // vLLM
    5000,   // text-generation-webui
};

}  // namespace dorix
