// ZIP extraction with libzip, entirely in memory.
#include "ZipReader.h"

#include <zip.h>

#include <cstring>
#include <memory>

#include <GenICam.h>

namespace GenApi {
namespace impl {

namespace {
// Largest description accepted from an archive.
constexpr zip_uint64_t kMaxDescriptionSize = 256ULL * 1024 * 1024;

struct ArchiveCloser {
  void operator()(zip_t* z) const { zip_discard(z); }
};
struct FileCloser {
  void operator()(zip_file_t* f) const { zip_fclose(f); }
};

bool EndsWithXml(const char* name) {
  const size_t n = std::strlen(name);
  return n >= 4 && (std::strcmp(name + n - 4, ".xml") == 0 || std::strcmp(name + n - 4, ".XML") == 0);
}
}  // namespace

std::string ExtractDescription(const void* data, size_t size) {
  if (!data || size == 0) throw RUNTIME_EXCEPTION("The zipped description is empty");
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(data, size, 0, &error);
  if (!source) {
    zip_error_fini(&error);
    throw RUNTIME_EXCEPTION("Cannot read the zipped description");
  }
  std::unique_ptr<zip_t, ArchiveCloser> archive(zip_open_from_source(source, ZIP_RDONLY, &error));
  if (!archive) {
    zip_source_free(source);
    const std::string why = zip_error_strerror(&error);
    zip_error_fini(&error);
    throw RUNTIME_EXCEPTION("The zipped description is not a valid archive: %s", why.c_str());
  }
  zip_error_fini(&error);
  const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
  zip_int64_t chosen = -1;
  for (zip_int64_t i = 0; i < count; ++i) {
    const char* name = zip_get_name(archive.get(), static_cast<zip_uint64_t>(i), 0);
    if (!name || name[0] == '\0' || name[std::strlen(name) - 1] == '/') continue;
    if (chosen < 0) chosen = i;
    if (EndsWithXml(name)) {
      chosen = i;
      break;
    }
  }
  if (chosen < 0) throw RUNTIME_EXCEPTION("The zipped description holds no file");
  zip_stat_t st;
  zip_stat_init(&st);
  if (zip_stat_index(archive.get(), static_cast<zip_uint64_t>(chosen), 0, &st) != 0 ||
      !(st.valid & ZIP_STAT_SIZE))
    throw RUNTIME_EXCEPTION("The zipped description's file size is unknown");
  if (st.size > kMaxDescriptionSize)
    throw RUNTIME_EXCEPTION("The zipped description's file is too large (%llu bytes)",
                            static_cast<unsigned long long>(st.size));
  std::unique_ptr<zip_file_t, FileCloser> file(
      zip_fopen_index(archive.get(), static_cast<zip_uint64_t>(chosen), 0));
  if (!file) throw RUNTIME_EXCEPTION("Cannot open the file inside the zipped description");
  std::string text(static_cast<size_t>(st.size), '\0');
  zip_uint64_t done = 0;
  while (done < st.size) {
    const zip_int64_t n = zip_fread(file.get(), &text[done], st.size - done);
    if (n <= 0) throw RUNTIME_EXCEPTION("The zipped description is damaged");
    done += static_cast<zip_uint64_t>(n);
  }
  return text;
}

}  // namespace impl
}  // namespace GenApi
