// SPDX-License-Identifier: MIT
#include "commands/help_book.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "commands/gallery_wall.h"
#include "commands/plain_build.h"
#include "media/animation_writer.h"

namespace kfx::commands {
namespace {

constexpr int kPictureQuality = 80;

bool Draw(const OpenEngine& engine, HostSession* session, Job job, const std::string& caption,
          PictureRow* row, Failure* failure) {
    CompleteValues(&job);
    if (!engine.engine.build(engine.opened, job, true, failure)) return false;
    row->push_back({PlayBuilt(session->built, session->record), caption});
    return true;
}

bool ResolveDefaults(const OpenEngine& engine, const EffectChoice& choice, Job* job, Failure* failure) {
    return ResolveEffectJob(choice, engine.engine, engine.opened, job, failure);
}

std::vector<int> ShownValues(const Parameter& parameter) {
    if (parameter.kind == Parameter::Slider) return {parameter.minimum, parameter.value, parameter.maximum};
    std::vector<int> all;
    for (int value = parameter.minimum; value <= parameter.maximum; ++value) all.push_back(value);
    return all;
}

std::string InLowerCase(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// What a list chooses shows only while the switch that names it is on, such as "Enable channels".
void TurnOnSwitchOf(const Parameter& list, Job* job) {
    for (const Parameter& other : job->parameters) {
        if (other.kind == Parameter::CheckBox &&
            InLowerCase(other.name).find(InLowerCase(list.name)) != std::string::npos)
            job->values.push_back({other, 1});
    }
}

std::string CaptionOf(const Parameter& parameter, int value) {
    const bool isDefault = parameter.kind == Parameter::Slider && value == parameter.value;
    return parameter.name + ": " + ValueText(parameter, value) + (isDefault ? " (standard)" : "");
}

std::string Base64(const std::vector<uint8_t>& bytes) {
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        uint32_t group = static_cast<uint32_t>(bytes[i]) << 16;
        if (count > 1) group |= static_cast<uint32_t>(bytes[i + 1]) << 8;
        if (count > 2) group |= bytes[i + 2];
        for (size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? kDigits[group >> (18 - 6 * digit) & 63] : '=';
    }
    return text;
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '&')
            escaped += "&amp;";
        else if (c == '<')
            escaped += "&lt;";
        else if (c == '"')
            escaped += "&quot;";
        else
            escaped += c;
    }
    return escaped;
}

// Empty: memory ran out.
std::string FigureOf(const HelpPicture& picture) {
    std::vector<uint8_t> file;
    std::string error;
    const WebpOptions options = {.kind = WebpKind::Lossy, .quality = kPictureQuality};
    if (!EncodeWebp(picture.animation, &file, &error, options)) return "";
    const std::string caption = Escaped(picture.caption);
    return "<figure><img src=\"data:image/webp;base64," + Base64(file) + "\" width=\"" +
           std::to_string(picture.animation.width) + "\" height=\"" +
           std::to_string(picture.animation.height) + "\" alt=\"" + caption + "\"><figcaption>" + caption +
           "</figcaption></figure>\n";
}

// Where the section of the heading ends: before the next heading. npos: there is no such heading.
size_t SectionEnd(const std::string& document, const std::string& heading) {
    size_t start = document.find(">" + heading + "</h3>");
    if (start == std::string::npos) start = document.find(">" + heading + "</h2>");
    if (start == std::string::npos) return start;
    return std::min(document.find("<h2", start), document.find("<h3", start));
}

// Raster draws its lines in the local background colour.
struct BackgroundPicture {
    const char* caption;
    uint32_t color;  // 0x00BBGGRR
};
constexpr BackgroundPicture kBackgroundPictures[] = {
    {.caption = "Local background: gray", .color = 0x7F7F7F},
    {.caption = "Local background: white", .color = 0xFFFFFF},
    {.caption = "Local background: dark red", .color = 0x000080},
};

bool DrawBackgrounds(const OpenEngine& engine, HostSession* session, PictureRow* row, Failure* failure) {
    Job job;
    if (!ResolveDefaults(engine, {"Raster", {}}, &job, failure)) return false;
    job.background = Background::Color;
    for (const BackgroundPicture& picture : kBackgroundPictures) {
        job.backgroundColor = picture.color;
        if (!Draw(engine, session, job, picture.caption, row, failure)) return false;
    }
    return true;
}

}  // namespace

bool DrawEffectRows(const OpenEngine& engine, HostSession* session, const std::string& effect,
                    std::vector<PictureRow>* rows, Failure* failure) {
    Job job;
    if (!ResolveDefaults(engine, {effect, {}}, &job, failure)) return false;
    if (job.parameters.empty()) return Draw(engine, session, job, effect, &rows->emplace_back(), failure);
    for (const Parameter& parameter : job.parameters) {
        PictureRow& row = rows->emplace_back();
        std::vector<int> values = ShownValues(parameter);
        values.erase(std::unique(values.begin(), values.end()), values.end());
        for (const int value : values) {
            Job shown = job;
            if (parameter.kind == Parameter::List) TurnOnSwitchOf(parameter, &shown);
            shown.values.push_back({parameter, value});
            if (!Draw(engine, session, std::move(shown), CaptionOf(parameter, value), &row, failure))
                return false;
        }
    }
    return true;
}

bool DrawOutputRows(const OpenEngine& engine, HostSession* session, std::vector<PictureRow>* rows,
                    Failure* failure) {
    Job job;
    std::vector<std::string> palettes;
    if (!ResolveDefaults(engine, UnchangingEffect(), &job, failure) ||
        !engine.engine.listPalettes(engine.opened, &palettes, failure) ||
        !Draw(engine, session, job, "True color", &rows->emplace_back(), failure))
        return false;
    job.paletteUse = PaletteUse::Computed;
    if (!Draw(engine, session, job, "Custom palette", &rows->back(), failure)) return false;
    job.paletteUse = PaletteUse::Listed;
    for (size_t i = 0; i < palettes.size(); ++i) {
        job.palette = static_cast<int>(i);
        PictureRow& row = rows->emplace_back();
        for (const bool dithered : {false, true}) {
            job.dither = dithered;
            const std::string caption = palettes[i] + (dithered ? ", dithered" : "");
            if (!Draw(engine, session, job, caption, &row, failure)) return false;
        }
    }
    return DrawBackgrounds(engine, session, &rows->emplace_back(), failure);
}

bool DrawOverview(const OpenEngine& engine, HostSession* session, const std::vector<std::string>& effects,
                  PictureRow* row, Failure* failure) {
    Job job;
    if (!ResolveDefaults(engine, UnchangingEffect(), &job, failure) ||
        !Draw(engine, session, job, "The picture as it is", row, failure))
        return false;
    for (const std::string& effect : effects) {
        if (!ResolveDefaults(engine, {effect, {}}, &job, failure)) return false;
        ChoosePictureValues(effect, &job);
        if (!Draw(engine, session, job, effect, row, failure)) return false;
    }
    return true;
}

std::string HtmlOf(const std::vector<PictureRow>& rows) {
    std::string html;
    for (const PictureRow& row : rows) {
        html += "<div class=\"pictures\">\n";
        for (const HelpPicture& picture : row) {
            const std::string figure = FigureOf(picture);
            if (figure.empty()) return "";
            html += figure;
        }
        html += "</div>\n";
    }
    return html;
}

bool PutIntoDocument(const std::string& heading, const std::string& html, std::string* document) {
    if (!heading.empty()) {
        const size_t end = SectionEnd(*document, heading);
        if (end == std::string::npos) return false;
        document->insert(end, html + "\n");
        return true;
    }
    const size_t start = document->find("<a href=\"KFXPLUG1.PNG\">");
    const size_t end = document->find("</a>", start);
    if (start == std::string::npos || end == std::string::npos) return false;
    document->replace(start, end + 4 - start, html);
    return true;
}

bool PutWindowPicture(std::string* document) {
    const std::string name = "plugin-window.png";
    const size_t start = document->find('"' + name + '"');
    if (start == std::string::npos) return false;
    const std::string data = Base64({kWindowPicture, kWindowPicture + kWindowPictureBytes});
    document->replace(start + 1, name.size(), "data:image/png;base64," + data);
    return true;
}

}  // namespace kfx::commands
