#pragma once
// The process's Vulkan instance, and the validation of what it is asked.

#include <vulkan/vulkan.h>

namespace vantor::vulkan {

/// The process's one instance, made on first use and never destroyed: unloading a driver while
/// threads of it are winding down is where drivers crash. Null when none can be made.
///
/// With the environment variable VANTOR_GPU_VALIDATION set to 1 the instance is made with the
/// Khronos validation layer (core and synchronisation); the first message of it is written to
/// standard error and ends the process. Without that layer there is then no instance.
VkInstance sharedInstance();

/// Lets the instance make surfaces of windows. Called before it is made, by programs that show
/// pictures: with it, drivers look for a display server. Main thread.
void enablePresentation();
/// Whether that was called.
bool isPresentationEnabled();

/// Tells the validation layer that another process brought the image into its layout, which the
/// layer does not see by itself. Nothing without validation.
void noteImported(VkDevice device, VkImage image);

} // namespace vantor::vulkan
