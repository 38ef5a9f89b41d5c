<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: an Authorize.Net receipt, booked as a sales receipt to a customer.

  Receives the receipt document's root element, AuthorizeNet, and writes the qbXML 1.1
  message that adds the sales receipt, without declaration and DOCTYPE, as
  SReceiptFromAuthorizewoCust.xslt does (date, reference number, addresses, memo with the
  transaction ID, one line for the whole amount), with the customer in front:

      CustomerRef/FullName  the first Company element, first 41 letters (a customer name's
                            length, as CustomerFromAuthorize.xslt names a new customer); the
                            import puts the customer's name as QuickBooks has it there first.
                            Left out when the receipt names no company.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="SReceiptFromAuthorizewoCust.xslt"/>

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template name="customer-ref">
    <xsl:variable name="name" select="substring((.//Company)[1], 1, 41)"/>
    <xsl:if test="normalize-space($name) != ''">
      <CustomerRef><FullName><xsl:value-of select="$name"/></FullName></CustomerRef>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
