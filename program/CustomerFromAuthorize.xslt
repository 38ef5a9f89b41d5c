<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the customer record for the payer of an Authorize.Net receipt.

  Receives the receipt document's root element, AuthorizeNet: one element per receipt line,
  named after the line's label without blanks and slashes, the billing and shipping fields
  inside Billing and Shipping. Writes the qbXML 1.1 message that adds the customer, without
  declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><CustomerAddRq requestID="1"><CustomerAdd>
      Name, CompanyName  the first Company element (the import puts the confirmed customer
                         name there first), first 41 letters
      FirstName, LastName, BillAddress, ShipAddress, Phone, Fax, Email, Contact
                         from the receipt's lines "First Name", "Last Name", "Address",
                         "City", "State/Province", "Zip/Postal Code", "Country", "Phone",
                         "Fax" and "E-Mail" of its billing and shipping sections, where the
                         receipt has them, cut to the lengths QuickBooks takes
    </CustomerAdd></CustomerAddRq></QBXMLMsgsRq></QBXML>
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="name" select="substring((.//Company)[1], 1, 41)"/>
    <xsl:variable name="billing" select="(Billing | .)[last()]"/>
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <CustomerAddRq requestID="1">
          <CustomerAdd>
            <Name><xsl:value-of select="$name"/></Name>
            <CompanyName><xsl:value-of select="$name"/></CompanyName>
            <xsl:call-template name="field"><xsl:with-param name="element">FirstName</xsl:with-param><xsl:with-param name="value" select="$billing/FirstName"/><xsl:with-param name="length" select="25"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">LastName</xsl:with-param><xsl:with-param name="value" select="$billing/LastName"/><xsl:with-param name="length" select="25"/></xsl:call-template>
            <xsl:call-template name="address"><xsl:with-param name="element">BillAddress</xsl:with-param><xsl:with-param name="from" select="Billing"/></xsl:call-template>
            <xsl:call-template name="address"><xsl:with-param name="element">ShipAddress</xsl:with-param><xsl:with-param name="from" select="Shipping"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Phone</xsl:with-param><xsl:with-param name="value" select="$billing/Phone"/><xsl:with-param name="length" select="21"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Fax</xsl:with-param><xsl:with-param name="value" select="$billing/Fax"/><xsl:with-param name="length" select="21"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Email</xsl:with-param><xsl:with-param name="value" select="($billing/E-Mail | $billing/Email | $billing/EmailAddress)[1]"/><xsl:with-param name="length" select="99"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Contact</xsl:with-param><xsl:with-param name="value" select="concat($billing/FirstName, ' ', $billing/LastName)"/><xsl:with-param name="length" select="41"/></xsl:call-template>
          </CustomerAdd>
        </CustomerAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

  <!-- An element with the value's first `length` letters; nothing for an empty value. -->
  <xsl:template name="field">
    <xsl:param name="element"/>
    <xsl:param name="value"/>
    <xsl:param name="length"/>
    <xsl:if test="normalize-space($value) != ''">
      <xsl:element name="{$element}"><xsl:value-of select="substring(normalize-space($value), 1, $length)"/></xsl:element>
    </xsl:if>
  </xsl:template>

  <!-- A section's address: company (when there is one) and street, city, state, code, country. -->
  <xsl:template name="address">
    <xsl:param name="element"/>
    <xsl:param name="from"/>
    <xsl:if test="normalize-space(concat($from/Address, $from/City, $from/ZipPostalCode)) != ''">
      <xsl:element name="{$element}">
        <xsl:call-template name="field"><xsl:with-param name="element">Addr1</xsl:with-param><xsl:with-param name="value" select="($from/Company[normalize-space(.) != ''] | $from/Address)[1]"/><xsl:with-param name="length" select="41"/></xsl:call-template>
        <xsl:if test="normalize-space($from/Company) != ''">
          <xsl:call-template name="field"><xsl:with-param name="element">Addr2</xsl:with-param><xsl:with-param name="value" select="$from/Address"/><xsl:with-param name="length" select="41"/></xsl:call-template>
        </xsl:if>
        <xsl:call-template name="field"><xsl:with-param name="element">City</xsl:with-param><xsl:with-param name="value" select="$from/City"/><xsl:with-param name="length" select="31"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">State</xsl:with-param><xsl:with-param name="value" select="$from/StateProvince"/><xsl:with-param name="length" select="21"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">PostalCode</xsl:with-param><xsl:with-param name="value" select="$from/ZipPostalCode"/><xsl:with-param name="length" select="13"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">Country</xsl:with-param><xsl:with-param name="value" select="$from/Country"/><xsl:with-param name="length" select="31"/></xsl:call-template>
      </xsl:element>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
