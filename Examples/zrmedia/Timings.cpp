#include "Timings.h"

#include "JsonWriter.h"
#include "Output.h"

void Timings::write(Output &output) const
{
    JsonWriter json(output, 0);
    json.beginObject();
    const std::pair<const char *, std::optional<double>> parts[] = {{"reading", reading},
                                                                    {"parsing", parsing},
                                                                    {"listing", listing},
                                                                    {"searching", searching},
                                                                    {"sorting", sorting}};
    for (const auto &[name, seconds] : parts) {
        json.key(name);
        if (seconds)
            json.number(*seconds);
        else
            json.null();
    }
    json.endObject();
    json.finish();
}
