#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>

/// Usage: captions_write_seeds FOLDER. Creates the folder and writes a file of each caption format.
int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    constexpr std::pair<const char*, std::string_view> seeds[] = {
        {"webvtt",
         "\xEF\xBB\xBFWEBVTT - title\nX: y\n\nSTYLE\n::cue { color: red }\n\nREGION\nid:a\n\nNOTE a --> b\n\n"
         "first\r\n00:01.000 --> 100:00:02.500 line:0 align:start\r\n<v.Loud_voice Ann>Hi &amp; <b>b<i>x</b></i>"
         "<00:01.500>&lrm;&#x4e2d;<c.none>\r\n<ruby>a<rt>b</rt></ruby>\r\n\r\n00:02.000 --> 00:01.000\nlate\n"},
        {"subrip",
         "\xEF\xBB\xBF"
         "1\r\n00:00:01,000 --> 00:00:02,500 X1:1 X2:2\r\n<b>Bold</b> {\\an8}<font color=\"#ff0000\">"
         "red</font> &amp;\r\nsecond line\r\n\r\n2\r\n00:00:03.000 --> 00:00:01,000\r\nlate\r\n"},
        {"ass",
         "[Script Info]\r\nPlayResX: 640\nPlayResY: 360\n\n[V4+ Styles]\nFormat: Name, Fontname, Fontsize, "
         "PrimaryColour, "
         "OutlineColour, Bold, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV\nStyle: "
         "Default,DejaVu "
         "Sans,20,&H00FFFFFF,&H80000000,-1,1,2,1,2,10,10,10\nStyle: Loud voice,Arial,30,&HFF&,65280,0,3,1,0,8,1,2,3\n\n"
         "[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\nDialogue: "
         "0,0:00:01.00,0:00:02.50,*Loud voice,Ann,0,0,20,,{\\an8\\i1\\c&H00FF00&}Hi\\N{\\r\\t(0,1,\\fs20)\\pos(1,2)"
         "\\p1}m 0 0{\\p0} there, {note}you\\h{\nComment: 0,x\n[V4 Styles]\nStyle: "
         "Old,Arial,20,255,255,255,0,0,0,1,2,3,6,"
         "1,1,1,0,0\n"},
        {"utf16",
         {"\xFF\xFE"
          "1\0\r\0\n\0",
          8}},
    };
    for (const auto& [name, content] : seeds) std::ofstream(folder / name, std::ios::binary) << content;
    return 0;
}
