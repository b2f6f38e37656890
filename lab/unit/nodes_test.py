"""What the table of nodes says about each."""

import unittest

from machinelib import nodes
from machinelib.nodes import Node


class Remarks(unittest.TestCase):
    def test_what_a_node_lacks_is_said(self):
        for node, remark in (
                (Node("USB\\A\\1", True, "Modem", "{...}\\0000", "modem"), ""),
                (Node("USB\\A\\1", True), "no driver"),
                (Node("USB\\A\\1", True, "Modem", "{...}\\0000"), "no service"),
                # the driver that comes with Windows, which has no key here
                (Node("USB\\A\\1", True, "CDROM"), ""),
                (Node("USB\\A\\1", False), "not present")):
            self.assertEqual(node.remark, remark)
            self.assertEqual(f"({remark})" in nodes.table([node]), bool(remark))

    def test_nodes_that_are_gone_are_not_undriven(self):
        bare, gone = Node("USB\\A\\1", True), Node("USB\\A\\2", False)
        self.assertEqual(nodes.undriven([bare, gone]), [bare])


if __name__ == "__main__":
    unittest.main()
