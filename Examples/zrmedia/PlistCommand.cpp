#include "Commands.h"
#include "JsonWriter.h"
#include "Messages.h"
#include "Output.h"
#include "Support.h"

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <climits>

Failure runPlist(const Arguments &arguments, Output &output, Timings &timings)
{
    fetchFile(arguments.file, arguments, timings);
    const auto list = Timings::measured(timings.parsing, [&] { return platform::PropertyList::read(arguments.file); });
    if (!list)
        return described(list.error());
    Timings::measured(timings.listing, [&] {
        JsonWriter json(output, INT_MAX);
        json.value(list.value());
        json.finish();
        return output.flush();
    });
    return {};
}
