#pragma once

/// \file
/// C API of the device's firmware library as this program uses it. The library itself is closed;
/// the simulated one in simulator/ has the same symbols. Only the GUI thread calls it, and every
/// call may block for as long as the device's services take.
///
/// Text results are written into the caller's buffer. Whether a NUL ends the text is the library's
/// affair: convert a buffer with firmwareText() (platform/firmwaretext.h), which never reads past
/// its end.

#ifdef __cplusplus
extern "C" {
#endif

/// Size in bytes of the record that rctrl_get_status() fills.
#define RCTRL_STATUS_SIZE 2208

/// Opens the link to the PLC runtime. Returns a handle >= 1, anything below means no link.
int rctrl_init_communication(void);
/// Fills \a status (RCTRL_STATUS_SIZE bytes). Returns 0 on success.
int rctrl_get_status(int handle, void *status);
/// Closes the link. The result carries no meaning.
int rctrl_exit_communication(int handle);
/// Starts every loaded application. Returns 0 on success.
int rctrl_start_all_applications(int handle);

/// Live address of \a interfaceName as dotted text, at most 20 bytes. Returns 0 on success.
int sysif_GetInterfaceIp(char *buffer, const char *interfaceName);
/// Live netmask of \a interfaceName as dotted text, at most 20 bytes. Returns 0 on success.
int sysif_GetInterfaceNetmask(char *buffer, const char *interfaceName);
/// Non-zero when the device has a second Ethernet interface.
int sysif_IsEth1Present(void);
/// Non-zero when the device has a third Ethernet interface.
int sysif_IsEth2Present(void);
/// Configured mode of an interface ("static", "dhcp", ...), at most 84 bytes. Returns 0 on success.
int sysdb_GetEth0Mode(char *buffer);
int sysdb_GetEth1Mode(char *buffer);
int sysdb_GetEth2Mode(char *buffer);
/// Default gateway, at most \a size bytes. Returns 1 when there is a route, 0 when there is none.
int sysgw_GetDefaultGateway(char *buffer, int size);
/// Name servers in force, at most 64 bytes. 0 or -3 (none known): the buffer is valid.
int sysnm_GetDNS1(char *buffer);
int sysnm_GetDNS2(char *buffer);

#ifdef __cplusplus
}
#endif
