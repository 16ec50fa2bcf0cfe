// Commands on the colour screen and the line LCD.
#include <cstring>
#include <optional>
#include <string>

#include "commands.h"
#include "qz_32.h"
#include "terminal_text.h"

namespace qzctl {
namespace {

struct Position {
    int x = 0;
    int y = 0;
};

void add_position(CLI::App* command, Position& position) {
    command->add_option("-x,--x", position.x, "Left edge in pixels (0-800)");
    command->add_option("-y,--y", position.y, "Top edge in pixels (0-480)");
}

// A subcommand that runs `call` on the open terminal and reports `done`.
template <class Call>
void on_run(CLI::App* command, Action& action, std::string what, Call call) {
    command->callback([&action, what, call] {
        action = [what, call](Session& session, Output& out) {
            Session::check(call(session.device()), what);
            out.add("done", "Done", what);
        };
    });
}

}  // namespace

void add_screen_commands(CLI::App& app, Action& action) {
    auto* screen = app.add_subcommand("screen", "Draw on the colour screen (800 x 480)");
    screen->require_subcommand(1);
    screen->fallthrough();  // --snapshot and the other program options also stand behind a command
    static std::string colour, background, text, file;
    static Position at;
    static int size = 24, page = 0, number = 0;
    static bool cut = false;

    auto* fill = screen->add_subcommand("fill", "Fill the screen with a colour \"r,g,b\"");
    fill->add_option("colour", colour, "Red, green, blue, each 0-255")->required();
    on_run(fill, action, "filling the screen", [](int device) { return SetFullScreenColor(device, colour.c_str()); });

    on_run(screen->add_subcommand("clear", "Clear the screen"), action, "clearing the screen",
           [](int device) { return ClearFullScreen(device); });

    auto* write = screen->add_subcommand("text", "Draw text; \\r\\n (four characters) starts a new row");
    write->add_option("text", text, "The text (UTF-8)")->required();
    write->add_option("-s,--size", size, "Font size in pixels (16-240)");
    write->add_option("-c,--colour", colour, "Text colour \"r,g,b\" (default blue on white)");
    write->add_option("--background", background, "Background colour \"r,g,b\"");
    write->add_flag("--cut", cut, "Cut rows at the right edge instead of wrapping");
    add_position(write, at);
    on_run(write, action, "drawing the text", [](int device) {
        const std::string gbk = utf8_to_gbk(text);
        return ShowTextInScreen(device, gbk.c_str(), size, colour.empty() ? nullptr : colour.c_str(),
                                background.empty() ? nullptr : background.c_str(), at.x, at.y, cut ? 0 : 1, 0);
    });

    auto* picture = screen->add_subcommand("picture", "Show a picture (PNG, JPEG, BMP, GIF), cut to the screen");
    picture->add_option("file", file, "Image file")->required()->check(CLI::ExistingFile);
    add_position(picture, at);
    on_run(picture, action, "showing the picture",
           [](int device) { return ShowPicInScreen(device, file.c_str(), at.x, at.y, 0, 0); });

    auto* mono = screen->add_subcommand("mono", "Show the black content of a picture, one bit a pixel");
    mono->add_option("file", file, "Image file")->required()->check(CLI::ExistingFile);
    add_position(mono, at);
    on_run(mono, action, "showing the monochrome picture",
           [](int device) { return ShowMonochromeInScreen(device, file.c_str(), at.x, at.y, 0, 0); });

    auto* load = screen->add_subcommand("load", "Store a full-screen picture in a page (0: show it now)");
    load->add_option("file", file, "Image file, scaled to 800 x 480 if larger")->required()->check(CLI::ExistingFile);
    load->add_option("-P,--page", page, "Page 0-4");
    on_run(load, action, "storing the picture", [](int device) { return LoadPicInScreen(device, page, file.c_str(), 0, 0, 0, 0); });

    auto* show = screen->add_subcommand("show", "Show a stored page");
    show->add_option("page", page, "Page 0-4")->required();
    on_run(show, action, "showing the page", [](int device) { return ActiveShowPic(device, page); });

    auto* sleep = screen->add_subcommand("sleep", "Set the auto sleep time (passed on unchanged)");
    sleep->add_option("time", number, "0-65535")->required();
    on_run(sleep, action, "setting the sleep time", [](int device) { return SetAutoSleepTime(device, number); });

    auto* vendor = screen->add_subcommand("vendor", "Read the screen's vendor code, or set it with --set");
    static std::optional<int> new_vendor;
    vendor->add_option("--set", new_vendor, "Vendor byte 0-255")->check(CLI::Range(0, 255));
    vendor->callback([&action] {
        action = [](Session& session, Output& out) {
            if (new_vendor)
                Session::check(SetScreenVendor(session.device(), static_cast<unsigned char>(*new_vendor)),
                               "setting the vendor");
            char code[1025] = {};
            Session::check(GetScreenVendor(session.device(), code), "reading the vendor");
            out.add("vendor", "Vendor", to_hex(reinterpret_cast<const unsigned char*>(code), std::strlen(code)));
        };
    });
}

void add_lcd_commands(CLI::App& app, Action& action) {
    auto* lcd = app.add_subcommand("lcd", "Write on the line LCD (4 lines of 16 columns)");
    lcd->require_subcommand(1);
    lcd->fallthrough();
    static std::string text;
    static int line = 0, column = 0, value = 0;
    static bool terminal_font = false;

    auto* write = lcd->add_subcommand("text", "Write text at a line and column");
    write->add_option("text", text, "The text (UTF-8; a Chinese character takes two columns)")->required();
    write->add_option("-l,--line", line, "Line 0-3");
    write->add_option("-c,--column", column, "Column 0-15");
    write->add_flag("--terminal-font", terminal_font, "Let the terminal render the text");
    on_run(write, action, "writing on the LCD", [](int device) {
        const std::string gbk = utf8_to_gbk(text);
        const auto* bytes = reinterpret_cast<const unsigned char*>(gbk.c_str());
        const int length = static_cast<int>(gbk.size());
        return terminal_font ? lcd_display_new(device, line, column, length, bytes)
                             : lcd_display_string2(device, line, column, length, bytes);
    });

    on_run(lcd->add_subcommand("clear", "Clear the LCD"), action, "clearing the LCD",
           [](int device) { return lcd_clear(device); });

    auto* brightness = lcd->add_subcommand("brightness", "Set the brightness level");
    brightness->add_option("level", value, "0 or 1")->required();
    on_run(brightness, action, "setting the brightness",
           [](int device) { return adjusts_Brightness(device, static_cast<unsigned char>(value)); });

    auto* backlight = lcd->add_subcommand("backlight", "Set the backlight delay");
    backlight->add_option("delay", value, "0-255")->required()->check(CLI::Range(0, 255));
    on_run(backlight, action, "setting the backlight delay",
           [](int device) { return backlight_Delay(device, static_cast<unsigned char>(value)); });
}

}  // namespace qzctl
