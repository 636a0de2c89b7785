// The English texts of the run-time errors. Hosts show and compare them, so the wording,
// misspellings included, does not change.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "tavolin/errors/trap.h"

namespace tavolin {
namespace {

struct MessageRow {
    std::int32_t number;
    std::string_view text;
};

// In the order of the numbers. 483 has no text.
constexpr MessageRow kMessages[] = {
    {6,
     "An overflow occured as a result of an assignment\r\n"
     "that exceeds the limitations of the application"},
    {7, "More memory was required than is available for this action"},
    {14,
     "Your system may have run out of memory, which prevented a string\r\n"
     "from being allocated. Remove any unnecessary applications from memory\r\n"
     "to create more space. If that doesn't solve the probelm then abort"},
    {51, "An internal malfunction has occurred"},
    {52, "Bad filename or number"},
    {53, "Cannot find the specified file"},
    {55, "File already open"},
    {57,
     "An input or output error occurred while your program was using\r\n"
     "a device such as a printer or disk drive\r\n"
     "Make sure the device is operating properly, and then retry the operation"},
    {58,
     "File already exist. Specify a new file name in the Name statement\r\n"
     "or delete the old file before specifying it in a Name statement"},
    {61, "Disk is full"},
    {68,
     "Your network connection may have been broken\r\n"
     "Reconnect to the network and retry the operation"},
    {70,
     "An attempt was made to write to a write-protected disk or\r\n"
     "to access a locked file"},
    {71,
     "There is no disk in the specified drive\r\n"
     "Put a disk in the drive and retry the operation"},
    {74, "Cannot move file to specified location. Try to move it manually"},
    {75, "Path/File access error"},
    {76,
     "Unable to find the specified path\r\n"
     "Respecify the path"},
    {91, "Cannot use object to handle requested operation"},
    {298, "A .dll file provided by the operating system couldn't be found"},
    {320,
     "You tried to use a file name such as AUX, CON, COM1,\r\n"
     "COM2, LPT1, LPT2, LPT3, LPT4, or NUL. Give the file another name"},
    {321, "The format of the data in the file is incompatible with the application"},
    {325,
     "The resource file you're trying to retrieve has an invalid format,\r\n"
     "or a specific resource in the file has an invalid format\r\n"
     "If the file contents have been damaged, reinstall the file from\r\n"
     "its original disk. If the error continues, contact the provider\r\n"
     "of the resource for a new file or a version of the resource with the expected format"},
    {335, "An attempt to read from or write to the system registry failed"},
    {336, "The ActiveX component has not been properly registered in the system registry"},
    {337, "The required .exe or .dll file can't be found"},
    {338,
     "The ActiveX component's .exe file failed to run correctly\r\n"
     "There may be a problem with the information in the registry"},
    {368, "The file specified is out of date. This program requires a later version"},
    {419, "You don't have the necessary permissions for the specified object"},
    {429, "Cannot use an object to perform the requested operation"},
    {430, "Automation is not supported"},
    {460,
     "You tried to place data from a component on the Clipboard,\r\n"
     "but the data is in a format incompatible with the Clipboard"},
    {462, "The remote server machine does not exist or is unavailable"},
    {463, "Class is not registered on local machine. Install program locally"},
    {481, "Invalid picture"},
    {482,
     "Printer error\r\n"
     "You must physically examine the printer\r\n"
     "Make sure all connections between computer and printer are solid\r\n"
     "Most printers provide a display for error information such as 'Out of paper,' 'Offline,'..."},
    {484,
     "Problem getting printer information from the system\r\n"
     "make sure the printer is set up correctly\r\n"
     "This error has the following causes and solutions:\r\n"
     " _You don't have a printer installed from the Windows Control Panel\r\n"
     " Open the Control Panel, double-click the Printers icon,\r\n"
     " and click Add Printer to install a printer\r\n"
     " _Your printer isn't online. Physically switch the printer online\r\n"
     " _Your printer is jammed or out of paper. Physically correct the problem"},
    {485,
     "The resource file picture format you tried to load doesn't match the\r\n"
     "specified property of the object"},
    {486, "You must have a graphics-capable printer to print a form image"},
    {31001,
     "Your system could not allocate or access enough memory\r\n"
     "or disk space for the specified operation"},
    {31004, "You tried to perform an action on an object that doesn't exist"},
    {31036, "Error saving to file. Possibly, there isn't enough disk space"},
    {31037, "Error loading from file. The file is corrupted"},
    {32755, "Operation Cancelled"},
};

}  // namespace

std::string_view GetErrorMessage(std::int32_t number) {
    const auto* row = std::lower_bound(
        std::begin(kMessages), std::end(kMessages), number,
        [](const MessageRow& candidate, std::int32_t wanted) { return candidate.number < wanted; });
    return row != std::end(kMessages) && row->number == number ? row->text : "ERROR";
}

}  // namespace tavolin
