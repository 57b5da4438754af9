/// Prints the ten most frequent words of a text file.
///
/// A native automation client: it knows nothing but published COM, and counts
/// in a dictionary of the host that the bridge hands out.
#include <cstdio>
#include <exception>

#include "automation_object.h"
#include "word_counter.h"
#include "word_reader.h"

namespace {

constexpr std::size_t shownWords = 10;

/// The calling thread's stay in COM.
class Apartment {
  public:
    Apartment() {
        HRESULT const code = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        if (FAILED(code)) throw wordcount::CallError("this thread cannot enter COM");
    }
    Apartment(Apartment const&) = delete;
    Apartment& operator=(Apartment const&) = delete;
    ~Apartment() { CoUninitialize(); }
};

/// Ends the host application when the work is over, also when it failed.
class ApplicationEnd {
  public:
    explicit ApplicationEnd(wordcount::AutomationObject& proxy) : proxy_(proxy) {}
    ApplicationEnd(ApplicationEnd const&) = delete;
    ApplicationEnd& operator=(ApplicationEnd const&) = delete;
    ~ApplicationEnd() {
        try {
            proxy_.call(OLESTR("TerminateApplication"));
        } catch (std::exception const& error) {
            std::fprintf(stderr, "wordcount: %s\n", error.what());
        }
    }

  private:
    wordcount::AutomationObject& proxy_;
};

void printMostFrequentWords(char const* path) {
    Apartment const apartment;
    auto proxy = wordcount::AutomationObject::create(OLESTR("VelkCOMAdapter.VelkCOMProxy"));
    ApplicationEnd const end(proxy);
    wordcount::WordCounter counter(proxy);
    wordcount::readWords(path, [&](std::string_view word) { counter.add(word); });
    for (auto const& entry : counter.mostFrequent(shownWords)) {
        std::printf("%ld %s\n", entry.count, entry.word.c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: wordcount FILE\n");
        return 2;
    }
    try {
        printMostFrequentWords(argv[1]);
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "wordcount: %s\n", error.what());
        return 1;
    }
}
