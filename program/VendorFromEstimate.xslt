<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the vendor record for the company that sent an estimate.

  Receives the EstimateRet of an exchange file and writes the qbXML 1.1 message that adds
  the sender as a vendor, exactly as VendorFromInvoice.xslt does for an invoice (see there).
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="VendorFromInvoice.xslt"/>

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

</xsl:stylesheet>
