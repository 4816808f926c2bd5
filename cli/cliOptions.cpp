#include "cli/cliOptions.h"

#include <charconv>
#include <limits>

namespace {

template <class T>
bool ParseNumber(const std::string& text, T& value) {
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size() && !text.empty();
}

// Takes the value of an option that needs one.
bool TakeValue(const std::vector<std::string>& args, std::size_t& i, std::string& value, std::string& error) {
    if (i + 1 >= args.size()) {
        error = "option " + args[i] + " needs a value";
        return false;
    }
    value = args[++i];
    return true;
}

bool ParseOption(const std::vector<std::string>& args, std::size_t& i, CliOptions& o, std::string& error) {
    const std::string& a = args[i];
    std::string v;
    if (a == "--json") {
        o.json = true;
    } else if (a == "--quiet") {
        o.quiet = true;
    } else if (a == "--extra-checks") {
        o.extraChecks = true;
    } else if (a == "--raw") {
        o.raw = true;
    } else if (a == "--keep-jpeg") {
        o.keepJpeg = true;
    } else if (a == "--password") {
        if (!TakeValue(args, i, v, error)) return false;
        o.password = v;
    } else if (a == "--stream") {
        std::string gen;
        if (!TakeValue(args, i, v, error) || !TakeValue(args, i, gen, error)) {
            error = "option --stream needs an object number and a generation";
            return false;
        }
        if (!ParseNumber(v, o.streamNum) || !ParseNumber(gen, o.streamGen)) {
            error = "--stream takes an object number and a generation, not '" + v + " " + gen + "'";
            return false;
        }
        o.streamRequested = true;
    } else if (a == "--contents") {
        std::uint32_t page = 0;
        if (!TakeValue(args, i, v, error)) return false;
        if (!ParseNumber(v, page) || page == 0) {
            error = "--contents takes a page number counted from 1, not '" + v + "'";
            return false;
        }
        o.contentsPage = page;
    } else if (a == "--export-images") {
        if (!TakeValue(args, i, v, error)) return false;
        o.exportDir = v;
    } else if (a == "--naming") {
        if (!TakeValue(args, i, v, error)) return false;
        if (v != "id" && v != "index") {
            error = "--naming takes id or index, not '" + v + "'";
            return false;
        }
        o.naming = v;
    } else if (a == "--format") {
        if (!TakeValue(args, i, v, error)) return false;
        if (v != "png" && v != "jpg" && v != "tif" && v != "bmp") {
            error = "--format takes png, jpg, tif or bmp, not '" + v + "'";
            return false;
        }
        o.format = v;
    } else if (a == "-j" || a.rfind("-j", 0) == 0) {
        if (a == "-j" && !TakeValue(args, i, v, error)) return false;
        if (a != "-j") v = a.substr(2);
        if (!ParseNumber(v, o.jobs) || o.jobs == 0) {
            error = "-j takes a positive number of files to analyse at once, not '" + v + "'";
            return false;
        }
    } else {
        error = "unknown option " + a;
        return false;
    }
    return true;
}

bool CheckCombinations(const CliOptions& o, std::string& error) {
    if (o.files.empty()) {
        error = "no PDF file given";
    } else if (o.raw && !o.streamRequested) {
        error = "--raw goes with --stream";
    } else if ((o.streamRequested || o.contentsPage) && o.files.size() != 1) {
        error = std::string(o.streamRequested ? "--stream" : "--contents") + " takes exactly one file";
    } else if (o.streamRequested && o.contentsPage) {
        error = "--stream and --contents cannot be combined";
    } else if ((o.naming != "id" || o.keepJpeg || o.format != "jpg") && !o.exportDir) {
        error = "--naming, --keep-jpeg and --format go with --export-images";
    }
    return error.empty();
}

}  // namespace

CliAction ParseCommandLine(const std::vector<std::string>& args, CliOptions& options, std::string& error) {
    bool optionsEnded = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (optionsEnded || a.empty() || a[0] != '-' || a == "-") {
            options.files.push_back(a);
        } else if (a == "--") {
            optionsEnded = true;
        } else if (a == "--help" || a == "-h") {
            return CliAction::Help;
        } else if (a == "--version") {
            return CliAction::Version;
        } else if (!ParseOption(args, i, options, error)) {
            return CliAction::UsageError;
        }
    }
    return CheckCombinations(options, error) ? CliAction::Run : CliAction::UsageError;
}

std::string ExportFormatId(const std::string& format) {
    if (format == "jpg") return "jpeg";
    if (format == "tif") return "tiff";
    return format;
}

std::string UsageText() {
    return "Usage: vantrel-cli [OPTIONS] FILE.pdf [FILE.pdf ...]\n"
           "\n"
           "Reads the structure of PDF files and reports every irregularity found.\n"
           "\n"
           "Options:\n"
           "  --json                 one JSON report per file (JSON Lines for several files)\n"
           "  --password PW          password to try after the empty one\n"
           "  --quiet                print nothing; the exit status tells the outcome\n"
           "  --extra-checks         also report our own checks beyond the standard report\n"
           "  --stream N G           write the decoded data of object N G to standard output\n"
           "  --raw                  with --stream: the stored bytes, not decoded\n"
           "  --contents PAGE        print the content operations of a page (from 1)\n"
           "  --export-images DIR    write every image to DIR\n"
           "  --naming id|index      export file names: \"N G.ext\" (default) or a running index\n"
           "  --keep-jpeg            copy JPEG and CCITT data out unchanged\n"
           "  --format png|jpg|tif|bmp  export format for decoded images (default jpg)\n"
           "  -j N                   analyse up to N files at once (default: one per processor)\n"
           "  --help, --version      show this help or the version\n"
           "\n"
           "Exit status: 0 opened with no message, 1 opened with messages, 2 not opened,\n"
           "64 bad usage; with several files the highest of them.\n";
}
