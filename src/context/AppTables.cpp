#include "context/AppTables.h"

#include <array>

namespace dorix::apptables {

namespace {

using Words = std::string_view;

constexpr auto appRows = std::to_array<App>({
    {"net.whatsapp.WhatsApp", Tone::informal, Ph::whatsappLogo},
    {"desktop.WhatsApp", Tone::informal, Ph::whatsappLogo},
    {"com.apple.MobileSMS", Tone::informal, Ph::chatCircle},
    {"ru.keepcoder.Telegram", Tone::informal, Ph::chatCircle},
    {"org.telegram.desktop", Tone::informal, Ph::chatCircle},
    {"com.hnc.Discord", Tone::informal, Ph::chatCircle},
    {"com.apple.mail", Tone::profesional, Ph::envelopeSimple},
    {"com.microsoft.Outlook", Tone::profesional, Ph::envelopeSimple},
    {"com.readdle.smartemail-Mac", Tone::profesional, Ph::envelopeSimple},
    {"com.superhuman.electron", Tone::profesional, Ph::envelopeSimple},
    {"com.tinyspeck.slackmacgap", Tone::cercano, Ph::slackLogo},
    {"com.microsoft.teams2", Tone::cercano, Ph::chatsCircle},
    {"com.microsoft.teams", Tone::cercano, Ph::chatsCircle},
    {"com.microsoft.Word", Tone::estructurado, Ph::wordLogo},
    {"com.apple.iWork.Pages", Tone::estructurado, Ph::fileText},
    {"notion.id", Tone::estructurado, Ph::notionLogo},
    {"md.obsidian", Tone::estructurado, Ph::notePencil},
    {"com.apple.Notes", Tone::neutral, Ph::notePencil},
    {"com.apple.TextEdit", Tone::neutral, Ph::fileText},
    {"com.apple.dt.Xcode", Tone::tecnico, Ph::code},
    {"com.microsoft.VSCode", Tone::tecnico, Ph::code},
    {"com.todesktop.230313mzl4w4u92", Tone::tecnico, Ph::code},
    {"dev.zed.Zed", Tone::tecnico, Ph::code},
    {"com.jetbrains.intellij", Tone::tecnico, Ph::code},
    {"com.apple.Terminal", Tone::tecnico, Ph::terminalWindow},
    {"com.googlecode.iterm2", Tone::tecnico, Ph::terminalWindow},
    {"com.mitchellh.ghostty", Tone::tecnico, Ph::terminalWindow},
    {"dev.warp.Warp-Stable", Tone::tecnico, Ph::terminalWindow},
});

constexpr auto browserRows = std::to_array<Words>({
    "com.google.Chrome",
    "com.apple.Safari",
    "company.thebrowser.Browser",
    "org.mozilla.firefox",
    "com.microsoft.edgemac",
    "com.brave.Browser",
    "com.operasoftware.Opera",
    "com.vivaldi.Vivaldi",
    "com.google.Chrome.canary",
    "com.apple.SafariTechnologyPreview",
    "app.zen-browser.zen",
    "ai.perplexity.comet",
});

constexpr auto gmail = std::to_array<Words>({"gmail", "bandeja de entrada", "inbox"});
constexpr auto outlook = std::to_array<Words>({"outlook"});
constexpr auto whatsapp = std::to_array<Words>({"whatsapp"});
constexpr auto linkedin = std::to_array<Words>({"linkedin"});
constexpr auto slack = std::to_array<Words>({"slack"});
constexpr auto teams = std::to_array<Words>({"microsoft teams", "| teams"});
constexpr auto googleDocs = std::to_array<Words>({"google docs", "documentos de google"});
constexpr auto notion = std::to_array<Words>({"notion"});
constexpr auto github = std::to_array<Words>({"github", "gitlab", "stack overflow"});
constexpr auto aiChat = std::to_array<Words>(
    {"chatgpt", "claude", "gemini", "perplexity", "copilot", "deepseek", "grok", "le chat", "mistral"});

constexpr auto siteRows = std::to_array<Site>({
    {gmail, "Gmail", Tone::profesional, Ph::envelopeSimple},
    {outlook, "Outlook", Tone::profesional, Ph::envelopeSimple},
    {whatsapp, "WhatsApp", Tone::informal, Ph::whatsappLogo},
    {linkedin, "LinkedIn", Tone::comunicativo, Ph::linkedinLogo},
    {slack, "Slack", Tone::cercano, Ph::slackLogo},
    {teams, "Teams", Tone::cercano, Ph::chatsCircle},
    {googleDocs, "Google Docs", Tone::estructurado, Ph::fileText},
    {notion, "Notion", Tone::estructurado, Ph::notionLogo},
    {github, "GitHub", Tone::tecnico, Ph::code},
    {aiChat, aiChatSiteName, Tone::neutral, Ph::chatCircle},
});

constexpr auto aiChatAppRows = std::to_array<Words>({
    "com.openai.chat",
    "com.anthropic.claudefordesktop",
    "ai.perplexity.mac",
    "com.google.GeminiMacOS",
});

// Hosts that serve a chat and nothing else, so that a service's other pages keep their own tone.
constexpr auto aiChatHostRows = std::to_array<Words>({
    "chatgpt.com",
    "chat.openai.com",
    "claude.ai",
    "gemini.google.com",
    "perplexity.ai",
    "copilot.microsoft.com",
    "copilot.cloud.microsoft",
    "chat.deepseek.com",
    "grok.com",
    "chat.mistral.ai",
});

constexpr auto editable = std::to_array<Words>({"AXTextField", "AXTextArea", "AXComboBox", "AXSearchField"});
constexpr auto neverEditable =
    std::to_array<Words>({"AXOutline", "AXList", "AXTable", "AXBrowser", "AXImage", "AXButton", "AXMenuBar"});

}  // namespace

std::span<const App> apps() { return appRows; }
std::span<const Words> browsers() { return browserRows; }
std::span<const Site> sites() { return siteRows; }
std::span<const Words> aiChatApps() { return aiChatAppRows; }
std::span<const Words> aiChatHosts() { return aiChatHostRows; }
std::span<const Words> editableRoles() { return editable; }
std::span<const Words> neverEditableRoles() { return neverEditable; }

}  // namespace dorix::apptables
