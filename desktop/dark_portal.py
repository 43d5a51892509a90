"""A desktop portal that has one setting: the person prefers dark."""

from gi.repository import Gio, GLib

_INTERFACE = """<node><interface name="org.freedesktop.portal.Settings">
  <method name="Read">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""


def answer(connection, sender, path, interface, method, arguments, invocation):
    if tuple(arguments) == ("org.freedesktop.appearance", "color-scheme"):
        value = GLib.Variant("v", GLib.Variant("u", 1))  # In one variant more than the signal.
        invocation.return_value(GLib.Variant("(v)", (value,)))
    else:
        invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "No such setting")


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
interface = Gio.DBusNodeInfo.new_for_xml(_INTERFACE).interfaces[0]
bus.register_object("/org/freedesktop/portal/desktop", interface, answer)
Gio.bus_own_name_on_connection(bus, "org.freedesktop.portal.Desktop",
                               Gio.BusNameOwnerFlags.NONE, None, None)
GLib.MainLoop().run()
