#include "accessfile/file/Location.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

namespace accessfile {

namespace {

std::string lower(std::string text)
{
    for (char& each : text) {
        if (each >= 'A' && each <= 'Z')
            each = static_cast<char>(each - 'A' + 'a');
    }
    return text;
}

std::string trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

bool liesIn(const std::filesystem::path& file, const std::filesystem::path& folder)
{
    const auto [end, at] = std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
    return end == folder.end() || (end->empty() && std::next(end) == folder.end());
}

/// Blanks stand there as \040.
std::string unescaped(const std::string& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size()) {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

struct Mount
{
    std::filesystem::path folder;
    std::string type;
    std::string options; ///< Between commas, with one at either end.
};

Mount mountOf(const std::filesystem::path& file, std::istream& mounts)
{
    Mount found;
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream fields(line);
        std::string skipped;
        std::string folder;
        fields >> skipped >> skipped >> skipped >> skipped >> folder;
        while (fields >> skipped && skipped != "-") {
        }
        Mount mount{unescaped(folder), {}, {}};
        std::string source;
        fields >> mount.type >> source >> mount.options;
        mount.options = "," + mount.options + ",";
        // A later mount covers an earlier one.
        if (liesIn(file, mount.folder) && mount.folder.native().size() >= found.folder.native().size())
            found = mount;
    }
    return found;
}

using Settings = std::map<std::string, std::string>;

/// Sections of smb.conf; names without blanks, in small letters.
std::map<std::string, Settings> serverSections(std::istream& text)
{
    std::map<std::string, Settings> sections;
    std::string section;
    for (std::string line; std::getline(text, line);) {
        line = trimmed(line);
        if (line.empty() || line[0] == '#' || line[0] == ';')
            continue;
        if (line[0] == '[') {
            section = lower(line.substr(1, line.find(']') - 1));
            continue;
        }
        const std::size_t sign = line.find('=');
        if (sign == std::string::npos)
            continue;
        std::string name = lower(line.substr(0, sign));
        std::erase_if(name, [](char each) { return each == ' ' || each == '\t'; });
        sections[section][name] = trimmed(line.substr(sign + 1));
    }
    return sections;
}

bool isYes(const std::string& text)
{
    const std::string word = lower(text);
    return word == "yes" || word == "true" || word == "1" || word == "on";
}

bool matches(std::string_view pattern, std::string_view name)
{
    if (pattern.empty())
        return name.empty();
    if (pattern[0] == '*')
        return matches(pattern.substr(1), name) || (!name.empty() && matches(pattern, name.substr(1)));
    return !name.empty() && (pattern[0] == '?' || pattern[0] == name[0]) && matches(pattern.substr(1), name.substr(1));
}

/// Patterns stand between slashes; the server compares without regard to case.
bool listed(const std::string& patterns, const std::string& name)
{
    std::istringstream each(lower(patterns));
    for (std::string pattern; std::getline(each, pattern, '/');) {
        if (!pattern.empty() && matches(pattern, lower(name)))
            return true;
    }
    return false;
}

/// Settings of a share that keep a Windows computer and a program on the server apart, and are not there.
std::string missingSettings(const std::filesystem::path& file, const Settings& share, const Settings& global)
{
    const auto value = [&](const char* name, const char* usual) {
        for (const Settings* settings : {&share, &global}) {
            if (const auto found = settings->find(name); found != settings->end())
                return found->second;
        }
        return std::string(usual);
    };
    if (isYes(value("kerneloplocks", "no")) && isYes(value("posixlocking", "yes")))
        return {};
    std::vector<std::string> missing;
    std::filesystem::path lockFile = file;
    lockFile.replace_extension(".ldb");
    const std::string veto = value("vetooplockfiles", "");
    if (isYes(value("oplocks", "yes")) &&
        (!listed(veto, file.filename().string()) || !listed(veto, lockFile.filename().string())))
        missing.emplace_back("veto oplock files = /*.mdb/*.ldb/");
    if (!isYes(value("strictlocking", "auto")))
        missing.emplace_back("strict locking = yes");
    if (!isYes(value("posixlocking", "yes")))
        missing.emplace_back("posix locking = yes");
    std::string text;
    for (const std::string& each : missing)
        text += (text.empty() ? "\"" : ", \"") + each + "\"";
    return text;
}

} // namespace

Location examineLocation(const std::filesystem::path& file, std::istream& mounts, std::istream& serverSettings)
{
    Location location;
    const Mount mount = mountOf(file, mounts);
    const auto option = [&](const char* name) { return mount.options.find(name) != std::string::npos; };
    const std::string folder = mount.folder.string();
    if (mount.type == "cifs" || mount.type == "smb3") {
        if (option(",nobrl,"))
            location.refusal = "A pasta de rede '" + folder +
                               "' foi montada com a opção nobrl, que esconde dos outros computadores quem está "
                               "gravando. Monte-a sem essa opção.";
        if (!option(",cache=none,"))
            location.warnings.push_back("A pasta de rede '" + folder +
                                        "' foi montada sem a opção cache=none: o que outro computador acaba de gravar "
                                        "pode demorar a aparecer aqui.");
        if (option(",vers=1.0,"))
            location.warnings.push_back("A pasta de rede '" + folder +
                                        "' usa a versão 1 do protocolo, em que as reservas não valem para todos. "
                                        "Monte-a com vers=2.1 ou mais nova.");
        return location;
    }
    if (mount.type.starts_with("nfs") || mount.type.starts_with("fuse")) {
        location.warnings.push_back("O arquivo de dados está em '" + folder + "' (" + mount.type +
                                    "), onde as reservas não chegam com segurança aos outros computadores. Use-o só "
                                    "deste computador.");
        return location;
    }
    const auto sections = serverSections(serverSettings);
    const auto global = sections.find("global");
    for (const auto& [name, share] : sections) {
        const auto path = share.find("path");
        if (name == "global" || path == share.end() || !liesIn(file, path->second))
            continue;
        const std::string missing =
            missingSettings(file, share, global == sections.end() ? Settings() : global->second);
        if (!missing.empty())
            location.warnings.push_back(
                "O arquivo de dados é servido a outros computadores como '" + name +
                "' (smb.conf), sem o que evita que dois gravem ao mesmo tempo. Acrescente: " + missing + ".");
    }
    return location;
}

Location locationOf(const std::filesystem::path& file)
{
    std::ifstream mounts("/proc/self/mountinfo");
    std::ifstream serverSettings("/etc/samba/smb.conf");
    return examineLocation(file, mounts, serverSettings);
}

} // namespace accessfile
