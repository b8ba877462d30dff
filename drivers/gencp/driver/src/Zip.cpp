#include "Zip.h"

#include <zip.h>

#include <memory>

#include "DriverFailure.h"

namespace vq::gencpdrv {

namespace {

// Inflated descriptions larger than this are refused (protects against archive bombs).
constexpr zip_uint64_t kMaxInflatedSize = 256ull * 1024 * 1024;

[[noreturn]] void fail(const std::string& why) {
  throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND, "zipped description: " + why);
}

struct ArchiveCloser {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct FileCloser {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};

bool endsWithXml(const char* name) {
  const std::string text(name != nullptr ? name : "");
  if (text.size() < 4) return false;
  std::string tail = text.substr(text.size() - 4);
  for (auto& c : tail) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return tail == ".xml";
}

}  // namespace

std::string inflateSingleXml(const std::vector<uint8_t>& archive) {
  if (archive.empty()) fail("empty archive");
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(archive.data(), archive.size(), 0, &error);
  if (source == nullptr) fail("cannot read archive");
  std::unique_ptr<zip_t, ArchiveCloser> zip(zip_open_from_source(source, ZIP_RDONLY, &error));
  if (!zip) {
    zip_source_free(source);
    zip_error_fini(&error);
    fail("not a ZIP archive");
  }
  zip_error_fini(&error);
  const zip_int64_t entries = zip_get_num_entries(zip.get(), 0);
  if (entries <= 0) fail("archive holds no file");
  zip_uint64_t chosen = 0;
  for (zip_int64_t i = 0; i < entries; ++i) {
    if (endsWithXml(zip_get_name(zip.get(), static_cast<zip_uint64_t>(i), 0))) {
      chosen = static_cast<zip_uint64_t>(i);
      break;
    }
  }
  zip_stat_t stat;
  zip_stat_init(&stat);
  if (zip_stat_index(zip.get(), chosen, 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE)) {
    fail("unreadable entry");
  }
  if (stat.size > kMaxInflatedSize) fail("entry too large");
  std::unique_ptr<zip_file_t, FileCloser> file(zip_fopen_index(zip.get(), chosen, 0));
  if (!file) fail("cannot open entry");
  std::string text(static_cast<std::size_t>(stat.size), '\0');
  zip_uint64_t done = 0;
  while (done < stat.size) {
    const zip_int64_t got = zip_fread(file.get(), &text[done], stat.size - done);
    if (got <= 0) fail("damaged entry");
    done += static_cast<zip_uint64_t>(got);
  }
  return text;
}

}  // namespace vq::gencpdrv
